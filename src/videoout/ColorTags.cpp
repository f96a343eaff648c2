// SPDX-License-Identifier: BSD-2-Clause
#include "videoout/ColorTags.h"

namespace Ko {

/// Players want primaries and transfer beside the matrix, or they guess. For BT.709 and BT.2020 they are the standard's
/// own. BT.601's matrix says nothing about them: it is that of two television systems, and of webcams and JPEG, whose
/// primaries are BT.709's.
void tagColor(AVCodecContext& codec, ColorTags tags) {
    switch (tags.matrix) {
    case CM_BT601:
        codec.colorspace = AVCOL_SPC_SMPTE170M;
        break;
    case CM_BT709:
        codec.colorspace = AVCOL_SPC_BT709;
        codec.color_primaries = AVCOL_PRI_BT709;
        codec.color_trc = AVCOL_TRC_BT709;
        break;
    case CM_BT2020:
        codec.colorspace = AVCOL_SPC_BT2020_NCL;
        codec.color_primaries = AVCOL_PRI_BT2020;
        codec.color_trc = AVCOL_TRC_BT2020_10;
        break;
    case CM_UNKNOWN:
        break;
    }
    switch (tags.range) {
    case CR_STUDIO:
        codec.color_range = AVCOL_RANGE_MPEG;
        break;
    case CR_FULL:
        codec.color_range = AVCOL_RANGE_JPEG;
        break;
    case CR_UNKNOWN:
        break;
    }
}

} // namespace Ko
