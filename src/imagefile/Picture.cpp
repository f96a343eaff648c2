#include "imagefile/Picture.h"

#include "Kovanta/ConvertIm.h"
#include "image/ArrayStorage.h"
#include "image/PlaneRows.h"

#include <cstring>
#include <utility>

namespace Ko {

void requireFits(const char* function, std::uint32_t width, std::uint32_t height, std::uint32_t bytesPerPixel) {
    constexpr std::uint32_t mostRows = 1u << 28; // a table of more row pointers would be absurd by itself
    if (height > mostRows || !fitsArray(std::uint64_t{width} * bytesPerPixel, height))
        throwTooLarge(function);
}

void deliver(Image<unsigned char>& destination, Image<unsigned char>&& picture) {
    destination.size(picture.width, picture.height, true);
    if (destination.format == picture.format)
        destination = std::move(picture);
    else
        convertIm(destination, picture);
}

StoredPicture::StoredPicture(const Image<unsigned char>& source, PIXEL_FORMAT format)
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
