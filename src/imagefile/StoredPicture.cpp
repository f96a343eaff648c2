// SPDX-License-Identifier: BSD-2-Clause
#include "imagefile/StoredPicture.h"

#include "Kovanta/ConvertIm.h"
#include "image/PlaneRows.h"
#include "image/SizeLimit.h"

#include <cstring>

namespace Ko {

StoredPicture::StoredPicture(const Image<>& source, PIXEL_FORMAT format)
    : converted(format)
    , picture(&converted)
    , bytes(std::size_t{source.width} * converted.bytesPerPixelNum) {
    if (source.format != format) {
        convertIm(converted, source);
        return;
    }
    const auto from = sourceRows(source, 0);
    if (from.width >= bytes && from.height >= source.height) {
        picture = &source;
        return;
    }
    // The plane is smaller than the description, as after fmt() without size(): what is missing becomes 0.
    converted.size(source.width, source.height, true);
    const auto to = targetRows(converted, 0);
    for (std::size_t y = 0; y < to.height; ++y) {
        std::memset(to[y], 0, to.width);
        if (y < from.height)
            std::memcpy(to[y], from[y], least(from.width, to.width));
    }
}

} // namespace Ko
