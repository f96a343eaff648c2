// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_IMAGELAYOUT_H
#define KOVANTA_SRC_IMAGE_IMAGELAYOUT_H

#include "Kovanta/Image.h"

#include <cstddef>
#include <cstdint>

/// Sizing of all planes of an image at once: every plane gets its memory or none does.
namespace Ko::ImageLayout {

constexpr int planeCount = 4;

/// Copies all but the planes.
void copyDescription(Image<>& to, const Image<>& from) noexcept;

/// Samples a row and rows that a plane takes.
struct PlaneSize {
    std::uint32_t width;
    std::uint32_t height;
};
/// Those of plane @p p, which the format has, in an image of w x h pixels.
PlaneSize planeSize(const Image<>& im, int p, std::uint32_t w, std::uint32_t h);

/// Whether no routine ever reads or writes a plane that the format has: the chroma that the grey formats carry along.
constexpr bool isIdle(PIXEL_FORMAT format, int p) {
    return (format == PF_Y || format == PF_YAP) && (p == 1 || p == 2);
}

/// Whether pictures use a plane: the format has it, and it is not idle.
inline bool isUsed(const Image<>& im, int p) {
    return im.horDiv[p] != 0 && !isIdle(im.format, p);
}
/// The bytes that belong together in each plane: a packed pixel, but for PF_YUY2, and a single sample else.
inline std::size_t unitBytes(const Image<>& im) {
    return im.planar ? 1 : im.bytesPerPixelNum;
}

/// Whether every present plane of a w x h image fits 32-bit sizes.
bool fits(const Image<>& im, std::uint32_t w, std::uint32_t h);

/// Gives every present plane memory, or an empty row table, and the image its size.
/// @throws std::bad_alloc; nothing has changed then
void size(Image<>& im, std::uint32_t w, std::uint32_t h, bool owning);

/// Refuses what resizeTarget() would refuse, with the same effects.
void checkTarget(Image<>& im, std::uint32_t w, std::uint32_t h, const char* function);

/// Prepares the target of a conversion: takes the size, reallocates owning planes and leaves wrapped ones, which
/// must have one dimension right and hold the size.
/// @param function named in the refusal of a size that does not fit
/// @throws std::logic_error the resize text of a noalloc array; width and height are taken then, memory is not
/// @throws std::runtime_error "[function]: Image too large.", std::bad_alloc; nothing has changed then
void resizeTarget(Image<>& im, std::uint32_t w, std::uint32_t h, const char* function);

/// Gives the target of a copy a format and a size, the format also where wrapped planes refuse the size.
/// @throws as resizeTarget(); where a size does not fit or memory is short, nothing has changed
void takeShape(Image<>& dst, PIXEL_FORMAT format, std::uint32_t w, std::uint32_t h, const char* function);

} // namespace Ko::ImageLayout

#endif
