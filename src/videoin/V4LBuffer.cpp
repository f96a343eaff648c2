#include "videoin/V4LBuffer.h"

#include <algorithm>
#include <cstdint>

namespace Ko {

namespace {

/// Where the rows of one plane lie in a buffer, in bytes.
struct PlaneRows {
    std::uint64_t offset;
    std::uint64_t stride;
    std::uint64_t rowBytes;
    std::uint64_t count;

    std::uint64_t end() const { return count == 0 || rowBytes == 0 ? 0 : offset + (count - 1) * stride + rowBytes; }
};

struct Layout {
    PlaneRows plane[3];
    int planes;
};

/// Rows may be padded to more bytes than the width needs; a driver that says nothing, or nonsense, does not pad.
Layout layoutOf(PIXEL_FORMAT pixelFormat, const v4l2_pix_format& format) {
    const std::uint64_t width = format.width;
    const std::uint64_t height = format.height;
    if (pixelFormat == PF_YUY2) {
        const std::uint64_t stride = std::max<std::uint64_t>(format.bytesperline, width * 2);
        return {{{0, stride, width * 2, height}, {}, {}}, 1};
    }
    const std::uint64_t stride = std::max<std::uint64_t>(format.bytesperline, width);
    const std::uint64_t cb = stride * height;
    const std::uint64_t cr = cb + cb / 4;
    return {
        {{0, stride, width, height}, {cb, stride / 2, width / 2, height / 2}, {cr, stride / 2, width / 2, height / 2}},
        3};
}

} // namespace

bool V4LBuffer::wrap(const v4l2_pix_format& format) {
    const Layout layout = layoutOf(image.format, format);
    for (int p = 0; p < layout.planes; ++p)
        if (layout.plane[p].end() > mapping.size())
            return false;

    image.size(format.width, format.height, false);
    for (int p = 0; p < layout.planes; ++p) {
        const PlaneRows& rows = layout.plane[p];
        if (rows.rowBytes == 0)
            continue; // no row table either
        for (std::uint64_t r = 0; r < rows.count; ++r)
            image.plane[p].view[r] = mapping.get() + rows.offset + r * rows.stride;
    }
    return true;
}

} // namespace Ko
