// SPDX-License-Identifier: BSD-2-Clause
#include "videoout/AnyFrame.h"

#include "Kovanta/ConvertIm.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace Ko {

namespace {

using Byte = unsigned char;

/// A lone last column and row of pixels take their neighbours' chroma; without neighbours it stays neutral.
void completeChroma(const AVFrame& frame) {
    const int width = (frame.width + 1) / 2;
    const int height = (frame.height + 1) / 2;
    for (int p = 1; p < 3; ++p) {
        const auto row = [&frame, p](int y) {
            return frame.data[p] + std::ptrdiff_t{frame.linesize[p]} * y;
        };
        for (int y = 0; frame.width % 2 != 0 && width > 1 && y < height; ++y)
            row(y)[width - 1] = row(y)[width - 2];
        if (frame.height % 2 != 0 && height > 1)
            std::memcpy(row(height - 1), row(height - 2), static_cast<std::size_t>(width));
    }
}

/// The full-range sample for each of studio range, to the nearest.
constexpr std::array<Byte, 256> fullRange(int span) {
    std::array<Byte, 256> table{};
    for (std::size_t v = 0; v < table.size(); ++v) {
        const int above = std::clamp(static_cast<int>(v) - 16, 0, span);
        table[v] = static_cast<Byte>((above * 255 * 2 + span) / (2 * span));
    }
    return table;
}

/// With the halves that libav rounds up.
void toFullRange(const EncoderPicture& picture) {
    static constexpr auto luma = fullRange(219);
    static constexpr auto chroma = fullRange(224);
    const AVFrame& frame = *picture.frame;
    for (int p = 0; p < 3; ++p) {
        const auto& table = p == 0 ? luma : chroma;
        const int shift = p != 0 && picture.image.format == PF_YCC420P ? 1 : 0;
        for (int y = 0; y < (frame.height + shift) >> shift; ++y) {
            Byte* const row = frame.data[p] + std::ptrdiff_t{frame.linesize[p]} * y;
            for (int x = 0; x < (frame.width + shift) >> shift; ++x)
                row[x] = table[row[x]];
        }
    }
}

ColorMatrix knownMatrix(ColorMatrix matrix) {
    return matrix == CM_UNKNOWN ? CM_BT601 : matrix;
}

} // namespace

AnyFrame::AnyFrame(ColorMatrix frames, ColorTags pictures)
    : frameMatrix(knownMatrix(frames))
    , pictureMatrix(knownMatrix(pictures.matrix))
    , fullRange(pictures.range == CR_FULL) {}

void AnyFrame::convert(EncoderPicture& to, const Image<>& frame) {
    const bool odd = frame.width % 2 != 0 || frame.height % 2 != 0;
    const bool unbound = frame.format == PF_RGB || frame.format == PF_RGBA || frame.format == PF_Y;
    const bool jpeg = frame.format == PF_JFIF || frame.format == PF_JFIF422P;
    const ColorMatrix made = unbound ? pictureMatrix : jpeg ? CM_BT601 : frameMatrix;
    const bool another = made != pictureMatrix;
    const Image<>* source = &frame;
    // What owns its pixels gets those too that odd sizes leave unwritten in the picture.
    if (frame.format != PF_YCC444P && canConvert(frame.format, PF_YCC444P) &&
        (odd || another || !canConvert(frame.format, to.image.format))) {
        convertIm(between, frame, pictureMatrix);
        source = &between;
    }
    if (another) {
        convertIm(rgb, *source, made);
        convertIm(between, rgb, pictureMatrix);
        source = &between;
    }
    convertIm(to.image, *source, pictureMatrix);
    if (odd && to.image.format == PF_YCC420P)
        completeChroma(*to.frame);
    if (fullRange)
        toFullRange(to);
}

} // namespace Ko
