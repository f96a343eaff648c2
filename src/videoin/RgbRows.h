// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOIN_RGBROWS_H
#define KOVANTA_SRC_VIDEOIN_RGBROWS_H

#include "videoin/RowRoom.h"
#include "videoin/StoredFormat.h"

#include <cstddef>

struct AVFrame;

namespace Ko {

/// The rows of a decoded picture in RGB, or in colours of a palette, as studio-range Y'CbCr of ITU-R BT.601. Alpha is
/// dropped.
class RgbRows {
public:
    /// @throws std::runtime_error when the picture has no samples
    RgbRows(const StoredFormat& format, const AVFrame& picture, RowRoom& room);

    /// The first n pixels of a row, at least one.
    void into(unsigned char* y, unsigned char* cb, unsigned char* cr, std::size_t row, std::size_t n) const;

private:
    using Kernel = void (*)(unsigned char* y, unsigned char* cb, unsigned char* cr, const unsigned char* src,
                            std::size_t n);
    void findKernel();
    void fillPalette();
    void convertPacked(unsigned char* y, unsigned char* cb, unsigned char* cr, const unsigned char* src,
                       std::size_t n) const;

    const StoredFormat& format;
    const AVFrame& picture;
    RowRoom& room;
    Kernel kernel = nullptr; ///< For packed pixels of bytes.
    std::size_t offset = 0;  ///< Where they begin.
    unsigned char palette[3][256];
};

} // namespace Ko

#endif
