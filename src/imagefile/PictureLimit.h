// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGEFILE_PICTURELIMIT_H
#define KOVANTA_SRC_IMAGEFILE_PICTURELIMIT_H

#include <cstdint>

namespace Ko {

/// Refuses a picture that the 32-bit sizes of an image cannot hold or that setMaxImagePixels() forbids, before memory
/// is taken for it.
/// @throws std::runtime_error "[function]: Image too large."
void requireFits(const char* function, std::uint32_t width, std::uint32_t height, std::uint32_t bytesPerPixel);

} // namespace Ko

#endif
