// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOIN_STOREDFORMAT_H
#define KOVANTA_SRC_VIDEOIN_STOREDFORMAT_H

#include "Kovanta/ColorMatrix.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Ko {

/// Where a picture of a decoder has one component: in a byte, or in two that are one number.
struct StoredComponent {
    int plane;
    int offset; ///< Of the first sample in its row, in bytes.
    int step;   ///< From sample to sample, in bytes.
    int shift;  ///< Bits below the sample.
    int depth;  ///< Bits of the sample, 1 to 16.

    bool inWords() const { return shift + depth > 8; }
};

/// One of libav's pixel formats, as far as its pictures can become Y'CbCr here.
struct StoredFormat {
    enum class Kind : std::uint8_t { ycc, grey, rgb, palette };
    Kind kind;
    bool full;        ///< The range of Y'CbCr and grey.
    bool bigEndian;   ///< Which byte of two comes first.
    int chromaShiftX; ///< 2^this columns share a sample of chroma; up to 2.
    int chromaShiftY;
    StoredComponent component[3]; ///< Y', Cb, Cr; or R, G, B; or the one that there is.
};

/// How pictures are stored; nothing for what is neither Y'CbCr nor RGB in whole bytes of integers.
/// @param range as the stream tells; where it does not, grey is full range, as stills are, and Y'CbCr is not
std::optional<StoredFormat> storedFormatOf(int avPixelFormat, ColorRange range);

/// As libav calls it; "none" where it has no name.
std::string nameOfPixelFormat(int avPixelFormat);

} // namespace Ko

#endif
