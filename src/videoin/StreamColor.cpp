// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/StreamColor.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace Ko {

namespace {

bool isRgb(int avPixelFormat) {
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(avPixelFormat));
    return format && (format->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
}

} // namespace

ColorMatrix colorMatrixOf(int avPixelFormat, int avColorSpace) {
    if (isRgb(avPixelFormat))
        return CM_BT601;
    switch (avColorSpace) {
    case AVCOL_SPC_BT470BG:   // the same for 625 lines
    case AVCOL_SPC_SMPTE170M: // and for 525
        return CM_BT601;
    case AVCOL_SPC_BT709:
        return CM_BT709;
    case AVCOL_SPC_BT2020_NCL:
        return CM_BT2020;
    default:
        return CM_UNKNOWN;
    }
}

ColorRange colorRangeOf(int avPixelFormat, int avColorRange) {
    switch (avPixelFormat) {
    case AV_PIX_FMT_YUVJ411P:
    case AV_PIX_FMT_YUVJ420P:
    case AV_PIX_FMT_YUVJ422P:
    case AV_PIX_FMT_YUVJ440P:
    case AV_PIX_FMT_YUVJ444P:
        return CR_FULL;
    default:
        break;
    }
    if (isRgb(avPixelFormat) || avColorRange == AVCOL_RANGE_JPEG)
        return CR_FULL;
    return avColorRange == AVCOL_RANGE_MPEG ? CR_STUDIO : CR_UNKNOWN;
}

} // namespace Ko
