#ifndef KOVANTA_SRC_IMAGE_IMAGELAYOUT_H
#define KOVANTA_SRC_IMAGE_IMAGELAYOUT_H

#include "Kovanta/Image.h"

#include <cstdint>

namespace Ko {

/// Sizing of all planes of an image at once: every plane gets its memory or none does.
struct ImageLayout {
    /// Samples a row and rows that plane @p p takes in an image of w x h pixels.
    struct PlaneSize {
        std::uint32_t width;
        std::uint32_t height;
    };
    static PlaneSize planeSize(const Image<unsigned char>& im, int p, std::uint32_t w, std::uint32_t h);

    static void swapPlanes(Image<unsigned char>& a, Image<unsigned char>& b) noexcept;

    /// Whether every present plane of a w x h image fits 32-bit sizes.
    static bool fits(const Image<unsigned char>& im, std::uint32_t w, std::uint32_t h);

    /// Gives every present plane memory, or an empty row table.
    static void size(Image<unsigned char>& im, std::uint32_t w, std::uint32_t h, bool owning);

    /// Prepares the target of a conversion: takes the size, reallocates owning planes and leaves wrapped ones, which
    /// must have one dimension right and hold the size.
    /// @param function named in the refusal of a size that does not fit
    /// @throws std::logic_error the resize text of a noalloc array; width and height are taken then, memory is not
    /// @throws std::runtime_error "[function]: Image too large.", std::bad_alloc; nothing has changed then
    static void resizeTarget(Image<unsigned char>& im, std::uint32_t w, std::uint32_t h, const char* function);
};

} // namespace Ko

#endif
