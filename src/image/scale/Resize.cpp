// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Resize.h"

#include "Kovanta/PixelFormat.h"
#include "image/ImageLayout.h"
#include "image/MissingSamples.h"
#include "image/PlaneRows.h"
#include "image/SharedMemory.h"
#include "image/scale/PlaneScaler.h"
#include "util/Errors.h"

#include <cstring>

namespace Ko {

namespace {

constexpr const char* function = "resize";

void requireSizes(const Image<>& dst, const Image<>& src) {
    if (src.format == PF_UNKNOWN || src.format > PF_BGR)
        throwLogicError(function, "Don't know how to resize " + fmt2string(src.format) + ".");
    if (dst.format != src.format)
        throwLogicError(function,
                        "The source is " + fmt2string(src.format) + ", the target " + fmt2string(dst.format) + ".");
    if (src.width == 0 || src.height == 0)
        throwLogicError(function, "The source has no size.");
    if (dst.width == 0 || dst.height == 0)
        throwLogicError(function, "The target has no size.");
}

/// Copies what both hold of the planes that pictures use.
void copySamples(Image<>& dst, const Image<>& src) {
    for (int p = 0; p < ImageLayout::planeCount; ++p) {
        if (!ImageLayout::isUsed(src, p))
            continue;
        const auto size = ImageLayout::planeSize(src, p, src.width, src.height);
        const auto from = sourceRows(src, p);
        const auto to = targetRows(dst, p);
        const std::size_t width = least(size.width, from.width, to.width);
        for (std::size_t y = 0; width != 0 && y < least(size.height, from.height, to.height); ++y)
            std::memcpy(to[y], from[y], width);
    }
}

/// The picture in memory of its own, with 0 for what its planes do not hold.
Image<> completed(const Image<>& src) {
    Image<> whole(src.format);
    whole.size(src.width, src.height);
    blacken(whole);
    copySamples(whole, src);
    return whole;
}

/// Chroma of pictures that are too small for it is neutral.
PlaneScaler scalerFor(const ScaleSizes& sizes) {
    using Source = PlaneRows<const unsigned char*>;
    using Target = PlaneRows<unsigned char*>;
    if (sizes.toWidth == 0 || sizes.toHeight == 0)
        return [](const Target&, const Source&) {
        }; // there need be no rows
    if (sizes.fromWidth == 0 || sizes.fromHeight == 0)
        return [sizes](const Target& to, const Source&) {
            for (std::size_t y = 0; y < sizes.toHeight; ++y)
                std::memset(to[y], 128, sizes.toWidth * sizes.units);
        };
    return makePlaneScaler(sizes);
}

/// Nothing is written before all memory is there.
void scaleAll(Image<>& dst, const Image<>& src) {
    struct Way {
        ScaleSizes sizes;
        PlaneScaler scale;
    };
    const std::size_t bytes = ImageLayout::unitBytes(src);
    const auto sizesOf = [&](int p) {
        const auto have = ImageLayout::planeSize(src, p, src.width, src.height);
        const auto want = ImageLayout::planeSize(dst, p, dst.width, dst.height);
        const auto unit = static_cast<std::uint32_t>(bytes);
        return ScaleSizes{have.width / unit, have.height, want.width / unit, want.height, bytes};
    };
    Way ways[ImageLayout::planeCount]; // planes of one size go the same
    std::size_t wayOf[ImageLayout::planeCount] = {};
    std::size_t count = 0;
    for (int p = 0; p < ImageLayout::planeCount; ++p) {
        if (!ImageLayout::isUsed(src, p))
            continue;
        const ScaleSizes sizes = sizesOf(p);
        std::size_t& way = wayOf[p];
        while (way < count && !(ways[way].sizes == sizes))
            ++way;
        if (way == count)
            ways[count++] = {sizes, scalerFor(sizes)};
    }
    for (int p = 0; p < ImageLayout::planeCount; ++p)
        if (ImageLayout::isUsed(src, p))
            ways[wayOf[p]].scale(targetRows(dst, p), sourceRows(src, p));
}

} // namespace

void resize(Image<>& dst, const Image<>& src) {
    requireSizes(dst, src);
    if (!isWhole(src) || &dst == &src || sharingOf(dst, src).any)
        return resize(dst, completed(src));
    if (isWhole(dst))
        return scaleAll(dst, src);
    // Planes that were never sized get their memory; of one with a view the samples go where that shows them.
    ImageLayout::checkTarget(dst, dst.width, dst.height, function);
    Image<> whole(dst.format);
    whole.size(dst.width, dst.height);
    scaleAll(whole, src);
    ImageLayout::resizeTarget(dst, dst.width, dst.height, function);
    copySamples(dst, whole);
}

} // namespace Ko
