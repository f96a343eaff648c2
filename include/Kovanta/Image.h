// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_IMAGE_H
#define KOVANTA_IMAGE_H

#include "Kovanta/Array2D.h"
#include "Kovanta/Export.h"
#include "Kovanta/Flip.h"
#include "Kovanta/PixelFormat.h"

#include <cstdint>

namespace Ko {

/// @addtogroup images
/// @{

/// An image: up to four planes and the description of their layout.
///
/// There is one kind of sample, so its type can be left out: `Ko::Image frame(Ko::PF_YCC444P);` makes an image, and
/// `Ko::Image<>` names the type, in a parameter say.
///
/// The fields are public to be read; only the operations change the layout. In `im.plane[p].view[y][x]` the plane
/// has `width / horDiv[p]` x `height / verDiv[p]` samples (rounded down); a packed format has plane 0 only, with
/// `width * bytesPerPixelNum / bytesPerPixelDen` bytes a row.
///
/// Copying copies pixels deeply, so a copy of an image that wraps foreign memory owns its pixels. Moving hands the
/// storage (or the wrapping) over, needs no memory, and leaves a source of 0 x 0 pixels and the same format. Assigning
/// into an image that wraps foreign memory, by copy or by move, writes through to that memory and throws where the
/// sizes differ; so does what assigns elements, as erasing from a vector of wrappers. How to wrap: Kovanta/Wrap.h.
///
/// Exists for `unsigned char` only. One thread at a time per object.
template <class T = unsigned char>
class KOVANTA_API Image {
public:
    Array2D<T> plane[4];              ///< The samples; what each plane holds is said with the format.
    PIXEL_FORMAT format;              ///< What the fields below describe.
    std::uint32_t width;              ///< In pixels.
    std::uint32_t height;             ///< In pixels.
    std::uint32_t bytesPerPixelNum;   ///< Packed formats: numerator of the bytes per pixel; planar ones: 1.
    std::uint32_t bytesPerPixelDen;   ///< Its denominator.
    bool planar;                      ///< Whether each component has a plane of its own.
    std::uint32_t horDiv[4];          ///< Horizontal divisor of each plane; 0 where the plane is absent.
    std::uint32_t verDiv[4];          ///< Vertical divisor of each plane; 0 where the plane is absent.
    std::uint64_t sequenceNumber = 0; ///< Frame number stamped by sources that count frames (cameras).

    /// An image of the given format, without pixel memory until size() or a conversion gives it some.
    /// @throws std::logic_error as fmt()
    explicit Image(PIXEL_FORMAT f);
    /// @throws std::bad_alloc
    Image(const Image& src) = default;
    /// Takes the source's planes; the source is 0 x 0 afterwards.
    Image(Image&& src) noexcept;
    /// Copies all four planes, those that the format has no use for included, and the description. The source may wrap
    /// a part of this image: it is read before it goes.
    /// @throws std::logic_error "[Array2D<T>::operator=]: Noalloc and trying to resize." when a plane that
    ///         wraps foreign memory differs in size from the source's; nothing has changed then
    /// @throws std::bad_alloc; nothing has changed then
    Image& operator=(const Image& src);
    /// As the move constructor. An image with a plane that wraps foreign memory is copied into instead, as is one of
    /// which the source wraps a part; the source then stays as it is.
    /// @throws as the copy assignment, for such images only
    Image& operator=(Image&& src); // NOLINT(performance-noexcept-move-constructor)
    ~Image() = default;

    /// Sets the description for a format. Never reallocates: call size(), or let a conversion do it.
    /// @throws std::logic_error "[Image<T>::Image]: Unknown format." for PF_UNKNOWN and values above 11; `format`
    ///         holds the value all the same, every other field is as it was
    void fmt(PIXEL_FORMAT f);

    /// Sets the size in pixels and gives every present plane memory (uninitialised), or with @p alloc false an empty
    /// row table that the caller points at foreign memory. Planes that already own memory of that size keep it.
    /// A zero dimension releases the planes' memory.
    /// @throws std::runtime_error "[Image<T>::size]: Image too large." when a plane's row or the plane itself passes
    ///         2^32 - 1 bytes, std::bad_alloc; the image is then as it was
    void size(unsigned int w, unsigned int h, bool alloc = true);
};

/// `Ko::Image frame(Ko::PF_YCC444P)` needs no brackets.
explicit Image(PIXEL_FORMAT)->Image<unsigned char>;

extern template class Image<unsigned char>;

/// @}

} // namespace Ko

#endif
