// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGEFILE_ZEROFILL_H
#define KOVANTA_SRC_IMAGEFILE_ZEROFILL_H

#include <cstddef>

namespace Ko {

/// Sets bytes of ordinary memory to 0; of large stretches without touching them, where the system can.
void zeroFill(void* bytes, std::size_t size);

} // namespace Ko

#endif
