// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_WRAP_H
#define KOVANTA_WRAP_H

#include "Kovanta/Export.h"
#include "Kovanta/Image.h"

#include <cstddef>
#include <utility>

namespace Ko {

/// @addtogroup images
/// @{

/// Where the samples of a plane lie: the first byte of its top row, and how many bytes further each next row begins.
/// A negative stride is a picture stored bottom up: `first` is then in the row that lies last in memory.
struct PlaneMemory {
    unsigned char* first = nullptr; ///< First byte of the top row.
    std::ptrdiff_t stride = 0;      ///< From one row to the next, in bytes.
};
/// As PlaneMemory, for memory that must not be written.
struct ConstPlaneMemory {
    const unsigned char* first = nullptr; ///< First byte of the top row.
    std::ptrdiff_t stride = 0;            ///< From one row to the next, in bytes.
};

/// An image over memory that must not be written: to be read, converted from, shown, stored. It goes where a
/// `const Ko::Image<>&` is asked for. A copy of the image that it holds owns its pixels.
class ConstImage {
public:
    /// Takes an image that wraps the memory.
    explicit ConstImage(Image<>&& wrapper) noexcept
        : image(std::move(wrapper)) {}
    /// Holds a copy that owns its pixels.
    ConstImage(const ConstImage&) = default;
    /// Takes the wrapper over.
    ConstImage(ConstImage&&) noexcept = default;
    ConstImage& operator=(const ConstImage&) = delete; // it would write through to the memory
    ~ConstImage() = default;
    /// The image, to be read.
    operator const Image<>&() const { return image; }
    /// The image, to be read.
    const Image<>& operator*() const { return image; }
    /// The image, to be read.
    const Image<>* operator->() const { return &image; }

private:
    Image<> image;
};

/// Makes an image of w x h pixels over memory of the caller's, one entry a plane:
///
///     Ko::Image picture = Ko::wrapMemory(Ko::PF_YCC420P, w, h, {{y, yStride}, {cb, cStride}, {cr, cStride}});
///     Ko::Image pixels = Ko::wrapMemory(Ko::PF_RGB, w, h, {{bytes, 3 * w}});
///
/// Nothing is copied, and the memory must outlive the image. The chroma planes of PF_Y and PF_YAP, which nothing
/// reads, may be left out: `{{y, stride}}`, and `{{y, stride}, {}, {}, {alpha, stride}}`.
/// @throws std::logic_error for PF_UNKNOWN and unknown formats; "[wrapMemory]: Plane N has no memory.",
///         "[wrapMemory]: Plane N has a stride below its row's length.", "[wrapMemory]: The format has no plane N."
/// @throws std::runtime_error "[wrapMemory]: Image too large.", std::bad_alloc
KOVANTA_API Image<> wrapMemory(PIXEL_FORMAT format, unsigned int w, unsigned int h, const PlaneMemory (&planes)[4]);
/// The same over memory that must not be written.
KOVANTA_API ConstImage wrapConstMemory(PIXEL_FORMAT format, unsigned int w, unsigned int h,
                                       const ConstPlaneMemory (&planes)[4]);
/// Points an image anew, in the format that it has: for one buffer after another. Needs memory only for a change of
/// size. What the image held is released.
/// @throws as wrapMemory(); the image is then as it was
KOVANTA_API void rewrapMemory(Image<>& im, unsigned int w, unsigned int h, const PlaneMemory (&planes)[4]);

/// Makes an image over a rectangle of another, whose pixels it shares and which must outlive it. The top left corner
/// lies on even coordinates where chroma is halved: x for PF_JFIF422P and PF_YUY2, x and y for PF_YCC420P.
/// @throws std::out_of_range "[wrapRectangle]: The rectangle leaves the image." when it passes the image or what the
///         image's planes hold
/// @throws std::logic_error "[wrapRectangle]: The corner splits a pair of pixels.", std::bad_alloc
KOVANTA_API Image<> wrapRectangle(Image<>& im, unsigned int x, unsigned int y, unsigned int w, unsigned int h);
/// @overload
KOVANTA_API ConstImage wrapRectangle(const Image<>& im, unsigned int x, unsigned int y, unsigned int w, unsigned int h);
/// Not of an image that is about to go.
ConstImage wrapRectangle(const Image<>&& im, unsigned int x, unsigned int y, unsigned int w, unsigned int h) = delete;

/// @}

} // namespace Ko

#endif
