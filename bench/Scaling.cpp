// SPDX-License-Identifier: BSD-2-Clause
#include "Scaling.h"

#include "Kovanta/Resize.h"
#include "Levels.h"

#ifdef BENCH_LIBYUV
#include <libyuv.h>
#include <libyuv/scale_rgb.h> // which libyuv.h leaves out
#endif
#ifdef BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <string>

namespace bench {

namespace {

using Image = Ko::Image<>;

struct Pictures {
    Image src;
    Image dst;

    Pictures(Ko::PIXEL_FORMAT format, const unsigned (&sizes)[4])
        : src(format)
        , dst(format) {
        src.size(sizes[0], sizes[1]);
        dst.size(sizes[2], sizes[3]);
        std::minstd_rand random(3);
        for (auto* im : {&src, &dst})
            for (auto& plane : im->plane)
                if (plane.data)
                    std::generate_n(plane.data, std::size_t{plane.width} * plane.height,
                                    [&] { return static_cast<unsigned char>(random() >> 16); });
    }
    int planes() const { return src.format == Ko::PF_Y || !src.planar ? 1 : 3; }
};

#ifdef BENCH_LIBYUV
void scaleWithLibyuv(Pictures& pictures) {
    const auto number = [](unsigned value) {
        return static_cast<int>(value);
    };
    if (!pictures.src.planar) {
        const auto& from = pictures.src;
        auto& to = pictures.dst;
        libyuv::RGBScale(from.plane[0].data, number(3 * from.width), number(from.width), number(from.height),
                         to.plane[0].data, number(3 * to.width), number(to.width), number(to.height),
                         libyuv::kFilterBox);
        return;
    }
    for (int p = 0; p < pictures.planes(); ++p) {
        const auto& from = pictures.src.plane[p];
        auto& to = pictures.dst.plane[p];
        libyuv::ScalePlane(from.data, number(from.width), number(from.width), number(from.height), to.data,
                           number(to.width), number(to.width), number(to.height), libyuv::kFilterBox);
    }
}
#endif

#ifdef BENCH_OPENCV
void scaleWithOpencv(Pictures& pictures) {
    const bool packed = !pictures.src.planar;
    for (int p = 0; p < pictures.planes(); ++p) {
        const auto mat = [&](Image& im) {
            const auto& plane = im.plane[p];
            const auto width = static_cast<int>(packed ? im.width : plane.width);
            return cv::Mat(static_cast<int>(plane.height), width, packed ? CV_8UC3 : CV_8UC1, plane.data);
        };
        cv::Mat to = mat(pictures.dst);
        const bool fewer = pictures.dst.width < pictures.src.width;
        cv::resize(mat(pictures.src), to, to.size(), 0, 0, fewer ? cv::INTER_AREA : cv::INTER_LINEAR);
    }
}
#endif

std::string sizeText(const Image& im) {
    return std::to_string(im.width) + "x" + std::to_string(im.height);
}

} // namespace

std::vector<Contest> scalingContests(std::optional<Ko::KernelLevel> only) {
    constexpr unsigned sizes[][4] = {{1920, 1080, 640, 360},  {1920, 1080, 1280, 720}, {640, 480, 160, 120},
                                     {640, 480, 1280, 960},   {1920, 1080, 960, 540},  {1920, 1080, 854, 480},
                                     {1280, 720, 1920, 1080}, {4000, 3000, 1919, 1079}};
    const struct {
        const char* name;
        Ko::PIXEL_FORMAT format;
    } kinds[] = {{"4:2:0", Ko::PF_YCC420P}, {"4:4:4", Ko::PF_YCC444P}, {"RGB", Ko::PF_RGB}, {"grey", Ko::PF_Y}};
    std::vector<Contest> contests;
    for (const auto& size : sizes)
        for (const auto& kind : kinds) {
            const auto pictures = std::make_shared<Pictures>(kind.format, size);
            Contest contest{std::string(kind.name) + ", " + sizeText(pictures->src) + " to " + sizeText(pictures->dst),
                            static_cast<double>(std::max(pictures->src.width, pictures->dst.width)) *
                                std::max(pictures->src.height, pictures->dst.height),
                            {}};
            for (const Level& level : levels)
                if (Ko::kernelsOf(level.level) && (!only || level.level == *only))
                    contest.contenders.push_back({level.name, Side::ours, [=, forced = level.level] {
                                                      Ko::useKernels(forced);
                                                      Ko::resize(pictures->dst, pictures->src);
                                                  }});
#ifdef BENCH_LIBYUV
            contest.contenders.push_back({"libyuv", Side::peer, [=] {
                                              scaleWithLibyuv(*pictures);
                                          }});
#endif
#ifdef BENCH_OPENCV
            contest.contenders.push_back({"OpenCV", Side::peer, [=] {
                                              scaleWithOpencv(*pictures);
                                          }});
#endif
            contests.push_back(std::move(contest));
        }
    return contests;
}

} // namespace bench
