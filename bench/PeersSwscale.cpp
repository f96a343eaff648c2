// SPDX-License-Identifier: BSD-2-Clause
#include "Frames.h"

extern "C" {
#include <libavutil/cpu.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <map>
#include <memory>
#include <stdexcept>

namespace bench {

namespace {

struct FreeContext {
    void operator()(SwsContext* context) const { sws_freeContext(context); }
};

SwsContext* contextFor(const Frames& f, AVPixelFormat from, AVPixelFormat to) {
    static std::map<std::tuple<std::size_t, std::size_t, int, int>, std::unique_ptr<SwsContext, FreeContext>> made;
    auto& context = made[{f.w, f.h, from, to}];
    if (!context) {
        const int w = static_cast<int>(f.w);
        const int h = static_cast<int>(f.h);
        context.reset(sws_getContext(w, h, from, w, h, to, SWS_POINT, nullptr, nullptr, nullptr));
        if (!context)
            throw std::runtime_error("sws_getContext failed");
    }
    return context.get();
}

/// Bytes a row of component p.
int stride(const Frames& f, AVPixelFormat format, int p) {
    const AVPixFmtDescriptor* about = av_pix_fmt_desc_get(format);
    const int w = static_cast<int>(f.w);
    if (!(about->flags & AV_PIX_FMT_FLAG_PLANAR) && about->nb_components > 1)
        return w * av_get_bits_per_pixel(about) / 8;
    return p == 0 ? w : w >> about->log2_chroma_w;
}

template <AVPixelFormat from, AVPixelFormat to>
void scale(const Frames& f) {
    const bool packedFrom = from == AV_PIX_FMT_RGB24 || from == AV_PIX_FMT_YUYV422 || from == AV_PIX_FMT_RGBA;
    const bool packedTo = to == AV_PIX_FMT_RGB24 || to == AV_PIX_FMT_YUYV422;
    const Byte* source[4] = {packedFrom ? f.packed : f.plane[0], f.plane[1], f.plane[2]};
    Byte* target[4] = {packedTo ? f.packedOut : f.planeOut[0], f.planeOut[1], f.planeOut[2]};
    const int sourceStride[4] = {stride(f, from, 0), stride(f, from, 1), stride(f, from, 2)};
    const int targetStride[4] = {stride(f, to, 0), stride(f, to, 1), stride(f, to, 2)};
    sws_scale(contextFor(f, from, to), source, sourceStride, 0, static_cast<int>(f.h), target, targetStride);
}

} // namespace

void limitSwscale(Ko::KernelLevel level) {
    using Ko::KernelLevel;
    int allowed = AV_CPU_FLAG_MMX | AV_CPU_FLAG_MMXEXT | AV_CPU_FLAG_CMOV | AV_CPU_FLAG_SSE | AV_CPU_FLAG_SSE2;
    if (level >= KernelLevel::sse4)
        allowed |= AV_CPU_FLAG_SSE3 | AV_CPU_FLAG_SSSE3 | AV_CPU_FLAG_SSE4;
    if (level >= KernelLevel::avx2)
        allowed |= AV_CPU_FLAG_SSE42 | AV_CPU_FLAG_AVX | AV_CPU_FLAG_AVX2 | AV_CPU_FLAG_FMA3 | AV_CPU_FLAG_BMI1 |
                   AV_CPU_FLAG_BMI2;
    if (level != KernelLevel::avx512)
        av_force_cpu_flags(av_get_cpu_flags() & allowed);
}

std::vector<Peer> swscalePeers() {
    return {
        {"RGB to 4:4:4", "libswscale", scale<AV_PIX_FMT_RGB24, AV_PIX_FMT_YUV444P>},
        {"RGBA to 4:4:4", "libswscale", scale<AV_PIX_FMT_RGBA, AV_PIX_FMT_YUV444P>},
        {"RGB to 4:2:0", "libswscale", scale<AV_PIX_FMT_RGB24, AV_PIX_FMT_YUV420P>},
        {"4:4:4 to RGB", "libswscale", scale<AV_PIX_FMT_YUV444P, AV_PIX_FMT_RGB24>},
        {"4:4:4 to 4:2:0", "libswscale", scale<AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUV420P>},
        {"4:2:0 to 4:4:4", "libswscale", scale<AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV444P>},
        {"JFIF 4:2:2 to 4:4:4", "libswscale", scale<AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_YUV444P>},
        {"YUY2 to 4:4:4", "libswscale", scale<AV_PIX_FMT_YUYV422, AV_PIX_FMT_YUV444P>},
        {"4:4:4 to YUY2", "libswscale", scale<AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUYV422>},
        {"grey to studio", "libswscale", scale<AV_PIX_FMT_GRAY8, AV_PIX_FMT_YUV420P>},
    };
}

} // namespace bench
