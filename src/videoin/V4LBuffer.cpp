// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/V4LBuffer.h"

#include "Kovanta/Wrap.h"
#include "image/RowKernels.h"
#include "image/SampleKernels.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Ko {

bool V4LBuffer::wrap(const v4l2_pix_format& format) {
    const bool packed = image.format == PF_YUY2;
    const std::uint64_t rowBytes = std::uint64_t{format.width} * (packed ? 2 : 1);
    // Rows may be padded to more bytes than the width needs; a driver that says nothing, or nonsense, does not pad.
    const std::uint64_t stride = std::max<std::uint64_t>(format.bytesperline, rowBytes);
    const std::uint64_t cb = stride * format.height;
    const std::uint64_t cr = cb + cb / 4;
    const auto fits = [this](std::uint64_t offset, std::uint64_t step, std::uint64_t bytes, std::uint64_t rows) {
        return bytes == 0 || rows == 0 || offset + (rows - 1) * step + bytes <= mapping.size();
    };
    if (!fits(0, stride, rowBytes, format.height) ||
        (!packed && !fits(cr, stride / 2, format.width / 2, format.height / 2)))
        return false;

    unsigned char* const start = mapping.get();
    const auto step = static_cast<std::ptrdiff_t>(stride);
    if (packed)
        rewrapMemory(image, format.width, format.height, {{start, step}});
    else
        rewrapMemory(image, format.width, format.height,
                     {{start, step}, {start + cb, step / 2}, {start + cr, step / 2}});
    return true;
}

void V4LBuffer::toStudioRange() {
    Array2D<unsigned char>& luma = image.plane[0];
    for (unsigned int y = 0; y < luma.height; ++y)
        rowKernels().lumaToStudio(luma.view[y], luma.view[y], luma.width);
    for (int p = 1; p < 3; ++p)
        for (unsigned int y = 0; y < image.plane[p].height; ++y)
            sampleKernels().chromaToStudio(image.plane[p].view[y], image.plane[p].view[y], image.plane[p].width);
}

} // namespace Ko
