// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_SCALEPLANE_H
#define KOVANTA_SRC_IMAGE_SCALEPLANE_H

#include "image/PlaneRows.h"

#include <cstddef>
#include <cstdint>

namespace Ko {

struct Extent2D {
    std::uint32_t width;
    std::uint32_t height;
};

/// Scales a plane's units of so many bytes each, whose bytes are scaled apart. Neither size is 0, and nothing overlaps.
/// @throws std::bad_alloc; nothing was written then
void scalePlane(const PlaneRows<unsigned char*>& to, Extent2D target, const PlaneRows<const unsigned char*>& from,
                Extent2D source, std::size_t bytes);

} // namespace Ko

#endif
