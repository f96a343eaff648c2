// SPDX-License-Identifier: BSD-2-Clause
#include "videoout/EncoderFormat.h"

namespace Ko {

namespace {

/// Ends with AV_PIX_FMT_NONE; null where the encoder has no list.
const AVPixelFormat* formatsOf(const AVCodec& codec) {
#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(61, 13, 100)
    const void* formats = nullptr;
    avcodec_get_supported_config(nullptr, &codec, AV_CODEC_CONFIG_PIX_FORMAT, 0, &formats, nullptr);
    return static_cast<const AVPixelFormat*>(formats);
#else
    return codec.pix_fmts;
#endif
}

bool lists(const AVCodec& codec, AVPixelFormat wanted) {
    const AVPixelFormat* format = formatsOf(codec);
    while (format && *format != AV_PIX_FMT_NONE && *format != wanted)
        ++format;
    return format && *format == wanted;
}

AVPixelFormat firstFormat(const AVCodec& codec) {
    const AVPixelFormat* const formats = formatsOf(codec);
    return formats ? *formats : AV_PIX_FMT_NONE;
}

constexpr EncoderFormat studio[] = {{AV_PIX_FMT_YUV420P, PF_YCC420P}, {AV_PIX_FMT_YUV444P, PF_YCC444P}};
constexpr EncoderFormat jpeg[] = {{AV_PIX_FMT_YUVJ420P, PF_YCC420P, true}, {AV_PIX_FMT_YUVJ444P, PF_YCC444P, true}};

} // namespace

std::optional<EncoderFormat> usualFormat(const AVCodec& codec) {
    if (firstFormat(codec) != studio[0].libav)
        return std::nullopt;
    return studio[0];
}

std::optional<EncoderFormat> formatFor(const AVCodec& codec, unsigned int width, unsigned int height) {
    const AVPixelFormat first = firstFormat(codec);
    // Motion JPEG's studio-range formats are not what its readers expect.
    const bool prefersJpeg =
        first == AV_PIX_FMT_YUVJ420P || first == AV_PIX_FMT_YUVJ422P || first == AV_PIX_FMT_YUVJ444P;
    const EncoderFormat(&formats)[2] = prefersJpeg ? jpeg : studio;
    const bool odd = width % 2 != 0 || height % 2 != 0;
    for (const EncoderFormat& format : {formats[odd], formats[!odd]})
        if (lists(codec, format.libav))
            return format;
    return std::nullopt;
}

} // namespace Ko
