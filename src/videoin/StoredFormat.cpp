// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/StoredFormat.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace Ko {

namespace {

/// What libav's descriptors do not say, or say wrongly.
bool isSpecial(int avPixelFormat) {
    return avPixelFormat == AV_PIX_FMT_XYZ12LE || avPixelFormat == AV_PIX_FMT_XYZ12BE ||
           avPixelFormat == AV_PIX_FMT_UYYVYY411;
}

StoredFormat::Kind kindOf(const AVPixFmtDescriptor& format) {
    using Kind = StoredFormat::Kind;
    if ((format.flags & AV_PIX_FMT_FLAG_PAL) != 0)
        return Kind::palette;
    if ((format.flags & AV_PIX_FMT_FLAG_RGB) != 0)
        return Kind::rgb;
    return format.nb_components < 3 ? Kind::grey : Kind::ycc;
}

} // namespace

std::optional<StoredFormat> storedFormatOf(int avPixelFormat, ColorRange range) {
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(avPixelFormat));
    constexpr std::uint64_t foreign =
        AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_BAYER | AV_PIX_FMT_FLAG_FLOAT;
    if (!format || (format->flags & foreign) != 0 || isSpecial(avPixelFormat) || format->log2_chroma_w > 2 ||
        format->log2_chroma_h > 2)
        return std::nullopt;
    StoredFormat stored{};
    stored.kind = kindOf(*format);
    stored.full = range == CR_FULL || (range == CR_UNKNOWN && stored.kind == StoredFormat::Kind::grey);
    stored.bigEndian = (format->flags & AV_PIX_FMT_FLAG_BE) != 0;
    stored.chromaShiftX = format->log2_chroma_w;
    stored.chromaShiftY = format->log2_chroma_h;
    const bool single = stored.kind == StoredFormat::Kind::grey || stored.kind == StoredFormat::Kind::palette;
    for (int c = 0; c < (single ? 1 : 3); ++c) {
        const AVComponentDescriptor& from = format->comp[c];
        StoredComponent& to = stored.component[c];
        to = {from.plane, from.offset, from.step, from.shift, from.depth};
        if (stored.bigEndian && !to.inWords())
            ++to.offset; // descriptors count from the byte that would come first elsewhere
        if (to.depth < 1 || to.shift + to.depth > 16)
            return std::nullopt;
    }
    return stored;
}

std::string nameOfPixelFormat(int avPixelFormat) {
    const char* name = av_get_pix_fmt_name(static_cast<AVPixelFormat>(avPixelFormat));
    return name ? name : "none";
}

} // namespace Ko
