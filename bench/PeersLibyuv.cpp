// SPDX-License-Identifier: BSD-2-Clause
#include "Frames.h"

#include <libyuv.h>

#include <algorithm>

namespace bench {

namespace {

int width(const Frames& f) {
    return static_cast<int>(f.w);
}
int height(const Frames& f) {
    return static_cast<int>(f.h);
}

// In strips, so that what stands between the two steps stays in the cache.
void rgbTo444(const Frames& f) {
    const int w = width(f);
    constexpr int strip = 8;
    for (int y = 0; y < height(f); y += strip) {
        const int rows = std::min(strip, height(f) - y);
        const std::size_t at = f.w * static_cast<std::size_t>(y);
        libyuv::RAWToARGB(&f.packed[3 * at], 3 * w, &f.scratch[0], 4 * w, w, rows);
        libyuv::ARGBToI444(&f.scratch[0], 4 * w, &f.planeOut[0][at], w, &f.planeOut[1][at], w, &f.planeOut[2][at], w, w,
                           rows);
    }
}

void rgbaTo444(const Frames& f) {
    const int w = width(f);
    libyuv::ARGBToI444(&f.packed[0], 4 * w, &f.planeOut[0][0], w, &f.planeOut[1][0], w, &f.planeOut[2][0], w, w,
                       height(f));
}

void rgbTo420(const Frames& f) {
    const int w = width(f);
    libyuv::RAWToI420(&f.packed[0], 3 * w, &f.planeOut[0][0], w, &f.planeOut[1][0], w / 2, &f.planeOut[2][0], w / 2, w,
                      height(f));
}

void toRgb(const Frames& f) {
    const int w = width(f);
    libyuv::I444ToRAW(&f.plane[0][0], w, &f.plane[1][0], w, &f.plane[2][0], w, &f.packedOut[0], 3 * w, w, height(f));
}

/// U and V change places where red and blue do.
void toRgbOfBt709(const Frames& f) {
    const int w = width(f);
    libyuv::I444ToRGB24Matrix(&f.plane[0][0], w, &f.plane[2][0], w, &f.plane[1][0], w, &f.packedOut[0], 3 * w,
                              &libyuv::kYvuH709Constants, w, height(f));
}

void to420(const Frames& f) {
    const int w = width(f);
    libyuv::I444ToI420(&f.plane[0][0], w, &f.plane[1][0], w, &f.plane[2][0], w, &f.planeOut[0][0], w, &f.planeOut[1][0],
                       w / 2, &f.planeOut[2][0], w / 2, w, height(f));
}

void from420(const Frames& f) {
    const int w = width(f);
    libyuv::I420ToI444(&f.plane[0][0], w, &f.plane[1][0], w / 2, &f.plane[2][0], w / 2, &f.planeOut[0][0], w,
                       &f.planeOut[1][0], w, &f.planeOut[2][0], w, w, height(f));
}

void from422(const Frames& f) {
    const int w = width(f);
    libyuv::I422ToI444(&f.plane[0][0], w, &f.plane[1][0], w / 2, &f.plane[2][0], w / 2, &f.planeOut[0][0], w,
                       &f.planeOut[1][0], w, &f.planeOut[2][0], w, w, height(f));
}

void fromYuy2(const Frames& f) {
    const int w = width(f);
    constexpr int strip = 8;
    for (int y = 0; y < height(f); y += strip) {
        const int rows = std::min(strip, height(f) - y);
        const std::size_t at = f.w * static_cast<std::size_t>(y);
        Byte* cb = &f.scratch[0];
        Byte* cr = cb + f.w / 2 * strip;
        libyuv::YUY2ToI422(&f.packed[2 * at], 2 * w, &f.planeOut[0][at], w, cb, w / 2, cr, w / 2, w, rows);
        libyuv::ScalePlane(cb, w / 2, w / 2, rows, &f.planeOut[1][at], w, w, rows, libyuv::kFilterNone);
        libyuv::ScalePlane(cr, w / 2, w / 2, rows, &f.planeOut[2][at], w, w, rows, libyuv::kFilterNone);
    }
}

void toYuy2(const Frames& f) {
    const int w = width(f);
    constexpr int strip = 8;
    for (int y = 0; y < height(f); y += strip) {
        const int rows = std::min(strip, height(f) - y);
        const std::size_t at = f.w * static_cast<std::size_t>(y);
        Byte* cb = &f.scratch[0];
        Byte* cr = cb + f.w / 2 * strip;
        libyuv::ScalePlane(&f.plane[1][at], w, w, rows, cb, w / 2, w / 2, rows, libyuv::kFilterBox);
        libyuv::ScalePlane(&f.plane[2][at], w, w, rows, cr, w / 2, w / 2, rows, libyuv::kFilterBox);
        libyuv::I422ToYUY2(&f.plane[0][at], w, cb, w / 2, cr, w / 2, &f.packedOut[2 * at], 2 * w, w, rows);
    }
}

void split(const Frames& f) {
    const int w = width(f);
    libyuv::SplitRGBPlane(&f.packed[0], 3 * w, &f.planeOut[0][0], w, &f.planeOut[1][0], w, &f.planeOut[2][0], w, w,
                          height(f));
}

void merge(const Frames& f) {
    const int w = width(f);
    libyuv::MergeRGBPlane(&f.plane[0][0], w, &f.plane[1][0], w, &f.plane[2][0], w, &f.packedOut[0], 3 * w, w,
                          height(f));
}

void mirrorRgb(const Frames& f) {
    const int w = width(f);
    libyuv::RGB24Mirror(&f.packed[0], 3 * w, &f.packedOut[0], 3 * w, w, height(f));
}

void mirrorPlane(const Frames& f) {
    libyuv::MirrorPlane(&f.plane[0][0], width(f), &f.planeOut[0][0], width(f), width(f), height(f));
}

void turnPlane(const Frames& f) {
    libyuv::CopyPlane(&f.plane[0][0], width(f), &f.planeOut[0][0], width(f), width(f), -height(f));
}

void rotatePlane(const Frames& f) {
    libyuv::RotatePlane90(&f.plane[0][0], width(f), &f.planeOut[0][0], height(f), width(f), height(f));
}

} // namespace

void limitLibyuv(Ko::KernelLevel level) {
    using namespace libyuv;
    using Ko::KernelLevel;
    int allowed = kCpuInitialized | kCpuHasX86 | kCpuHasSSE2;
    if (level >= KernelLevel::sse4)
        allowed |= kCpuHasSSSE3 | kCpuHasSSE41 | kCpuHasERMS;
    if (level >= KernelLevel::avx2)
        allowed |= kCpuHasSSE42 | kCpuHasAVX | kCpuHasAVX2 | kCpuHasFMA3 | kCpuHasF16C;
    MaskCpuFlags(level == KernelLevel::avx512 ? -1 : allowed);
}

std::vector<Peer> libyuvPeers() {
    return {
        {"RGB to 4:4:4", "libyuv", rgbTo444},
        {"RGBA to 4:4:4", "libyuv", rgbaTo444},
        {"RGB to 4:2:0", "libyuv", rgbTo420},
        {"4:4:4 to RGB", "libyuv (not exact)", toRgb},
        {"4:4:4 to RGB, BT.709", "libyuv (not exact)", toRgbOfBt709},
        {"4:4:4 to 4:2:0", "libyuv", to420},
        {"4:2:0 to 4:4:4", "libyuv (bilinear)", from420},
        {"JFIF 4:2:2 to 4:4:4", "libyuv (no range map)", from422},
        {"YUY2 to 4:4:4", "libyuv", fromYuy2},
        {"4:4:4 to YUY2", "libyuv", toYuy2},
        {"JFIF to 4:4:4", "libyuv split (no range map)", split},
        {"4:4:4 to JFIF", "libyuv merge (no range map)", merge},
        {"flip RGB left-right", "libyuv", mirrorRgb},
        {"flip plane left-right", "libyuv", mirrorPlane},
        {"flip plane top-bottom", "libyuv", turnPlane},
        {"rotate plane", "libyuv", rotatePlane},
    };
}

} // namespace bench
