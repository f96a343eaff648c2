// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_CACHESIZE_H
#define KOVANTA_SRC_IMAGE_CACHESIZE_H

#include <cstddef>

namespace Ko {

/// The bytes of the processor's largest cache, asked for once; SIZE_MAX where the system does not say.
std::size_t largestCache() noexcept;

} // namespace Ko

#endif
