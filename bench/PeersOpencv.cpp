// SPDX-License-Identifier: BSD-2-Clause
#include "Frames.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace bench {

namespace {

cv::Mat mat(const Frames& f, Byte* bytes, int type) {
    return {static_cast<int>(f.h), static_cast<int>(f.w), type, bytes};
}

void rgbTo444(const Frames& f) {
    cv::Mat to = mat(f, f.packedOut, CV_8UC3);
    cv::cvtColor(mat(f, f.packed, CV_8UC3), to, cv::COLOR_RGB2YCrCb);
}

void toRgb(const Frames& f) {
    cv::Mat to = mat(f, f.packedOut, CV_8UC3);
    cv::cvtColor(mat(f, f.packed, CV_8UC3), to, cv::COLOR_YCrCb2RGB);
}

void rgbTo420(const Frames& f) {
    cv::Mat to(static_cast<int>(f.h + f.h / 2), static_cast<int>(f.w), CV_8UC1, f.packedOut);
    cv::cvtColor(mat(f, f.packed, CV_8UC3), to, cv::COLOR_RGB2YUV_I420);
}

template <int numerator, int denominator>
void scalePlane(const Frames& f) {
    cv::Mat to = mat(f, f.planeOut[0], CV_8UC1);
    mat(f, f.plane[0], CV_8UC1)
        .convertTo(to, CV_8U, double{numerator} / denominator, numerator < denominator ? 16 : -16 * 1.164);
}

void split(const Frames& f) {
    cv::Mat to[3] = {mat(f, f.planeOut[0], CV_8UC1), mat(f, f.planeOut[1], CV_8UC1), mat(f, f.planeOut[2], CV_8UC1)};
    cv::split(mat(f, f.packed, CV_8UC3), to);
}

void merge(const Frames& f) {
    const cv::Mat from[3] = {mat(f, f.plane[0], CV_8UC1), mat(f, f.plane[1], CV_8UC1), mat(f, f.plane[2], CV_8UC1)};
    cv::Mat to = mat(f, f.packedOut, CV_8UC3);
    cv::merge(from, 3, to);
}

void mirrorRgb(const Frames& f) {
    cv::Mat to = mat(f, f.packedOut, CV_8UC3);
    cv::flip(mat(f, f.packed, CV_8UC3), to, 1);
}

template <int axis>
void flipPlane(const Frames& f) {
    cv::Mat to = mat(f, f.planeOut[0], CV_8UC1);
    cv::flip(mat(f, f.plane[0], CV_8UC1), to, axis);
}

} // namespace

const char* opencvFeaturesBeyond(Ko::KernelLevel level) {
    switch (level) {
    case Ko::KernelLevel::portable:
        return "SSE3,SSSE3,SSE4.1,SSE4.2,POPCNT,AVX,FP16,FMA3,AVX2,AVX512F,AVX512-SKX";
    case Ko::KernelLevel::sse4:
        return "SSE4.2,POPCNT,AVX,FP16,FMA3,AVX2,AVX512F,AVX512-SKX";
    case Ko::KernelLevel::avx2:
    case Ko::KernelLevel::avxVnni:
        return "AVX512F,AVX512-SKX";
    case Ko::KernelLevel::avx512:
        return "";
    }
    return "";
}

std::vector<Peer> opencvPeers() {
    cv::setNumThreads(1);
    return {
        {"RGB to 4:4:4", "OpenCV (packed)", rgbTo444},
        {"4:4:4 to RGB", "OpenCV (packed)", toRgb},
        {"RGB to 4:2:0", "OpenCV", rgbTo420},
        {"grey to studio", "OpenCV convertTo", scalePlane<219, 255>},
        {"studio to grey", "OpenCV convertTo", scalePlane<255, 219>},
        {"JFIF to 4:4:4", "OpenCV split (no range map)", split},
        {"4:4:4 to JFIF", "OpenCV merge (no range map)", merge},
        {"flip RGB left-right", "OpenCV", mirrorRgb},
        {"flip plane left-right", "OpenCV", flipPlane<1>},
        {"flip plane top-bottom", "OpenCV", flipPlane<0>},
    };
}

} // namespace bench
