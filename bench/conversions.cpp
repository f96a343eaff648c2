// SPDX-License-Identifier: BSD-2-Clause
// Conversions and flips: our kernels level by level, convertIm as an application calls it, and what others make of
// the same job. Arguments are those of Google Benchmark, --table=FILE, and --level=NAME, which holds us and the others
// to the instructions of one level.
#include "Contest.h"
#include "Frames.h"
#include "Levels.h"
#include "Scaling.h"

#include "Kovanta/ConvertIm.h"
#include "Kovanta/Flip.h"
#include "Kovanta/Rotate.h"
#include "image/kernels/KernelLevels.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>

namespace {

using namespace bench;
using Routine = void (*)(Ko::Image<>& dst, const Ko::Image<>& src);

struct Job {
    const char* name;
    Ko::PIXEL_FORMAT from;
    Ko::PIXEL_FORMAT to;
    Routine routine;
    bool throughConvertIm;
};

void flipLeftRight(Ko::Image<>& dst, const Ko::Image<>& src) {
    Ko::flipHor(dst, src);
}
void flipTopBottom(Ko::Image<>& dst, const Ko::Image<>& src) {
    Ko::flipVer(dst, src);
}

void toRgbOfBt709(Ko::Image<>& dst, const Ko::Image<>& src) {
    Ko::convertIm(dst, src, Ko::CM_BT709);
}

void rotateQuarter(Ko::Image<>& dst, const Ko::Image<>& src) {
    Ko::rotate(dst, src, Ko::OR_ROTATED_90);
}

const Job jobs[] = {
    {"RGB to 4:4:4", Ko::PF_RGB, Ko::PF_YCC444P, RGB_2_YCC444P, true},
    {"RGBA to 4:4:4", Ko::PF_RGBA, Ko::PF_YCC444P, RGB_2_YCC444P, true},
    {"RGB to 4:2:0", Ko::PF_RGB, Ko::PF_YCC420P, RGB_2_YCC420P, false},
    {"4:4:4 to RGB", Ko::PF_YCC444P, Ko::PF_RGB, YCC444P_2_RGB, true},
    {"4:4:4 to RGB, BT.709", Ko::PF_YCC444P, Ko::PF_RGB, toRgbOfBt709, false},
    {"grey to studio", Ko::PF_Y, Ko::PF_YCC420P, Y_2_YCC444P, true},
    {"studio to grey", Ko::PF_YCC444P, Ko::PF_Y, YCC444P_2_Y, true},
    {"4:4:4 to 4:2:0", Ko::PF_YCC444P, Ko::PF_YCC420P, YCC444P_2_YCC420P, true},
    {"4:2:0 to 4:4:4", Ko::PF_YCC420P, Ko::PF_YCC444P, YCC420P_2_YCC444P, true},
    {"YUY2 to 4:4:4", Ko::PF_YUY2, Ko::PF_YCC444P, YUY2_2_YCC444P, true},
    {"4:4:4 to YUY2", Ko::PF_YCC444P, Ko::PF_YUY2, YCC444P_2_YUY2, false},
    {"JFIF 4:2:2 to 4:4:4", Ko::PF_JFIF422P, Ko::PF_YCC444P, JFIF422P_2_PF_YCC444P, true},
    {"JFIF to 4:4:4", Ko::PF_JFIF, Ko::PF_YCC444P, JFIF_2_YCC444P, true},
    {"4:4:4 to JFIF", Ko::PF_YCC444P, Ko::PF_JFIF, YCC444P_2_JFIF, true},
    {"flip RGB left-right", Ko::PF_RGB, Ko::PF_RGB, flipLeftRight, false},
    {"flip plane left-right", Ko::PF_Y, Ko::PF_Y, flipLeftRight, false},
    {"flip plane top-bottom", Ko::PF_Y, Ko::PF_Y, flipTopBottom, false},
    {"rotate plane", Ko::PF_Y, Ko::PF_Y, rotateQuarter, false},
};

/// Bytes that a conversion has to read or write.
std::size_t bytesOf(const Ko::Image<>& im, bool lumaOnly) {
    std::size_t sum = 0;
    for (int p = 0; p < (lumaOnly ? 1 : 4); ++p)
        if (im.plane[p].rows)
            sum += std::size_t{im.plane[p].width} * im.plane[p].height;
    return sum;
}

/// Fills the image with what the peers' memory holds and lets them use its memory instead.
void share(Ko::Image<>& im, Byte*& packed, Byte* (&plane)[3]) {
    const bool planar = im.plane[1].data;
    for (int p = 0; p < (planar ? 3 : 1); ++p) {
        Byte*& peers = planar ? plane[p] : packed;
        std::memcpy(im.plane[p].data, peers, std::size_t{im.plane[p].width} * im.plane[p].height);
        peers = im.plane[p].data;
    }
}

Contest contestOf(const Job& job, const std::shared_ptr<SpareMemory>& spare, const std::vector<Peer>& peers,
                  std::optional<Ko::KernelLevel> only) {
    Frames frames = spare->frames();
    const auto w = static_cast<unsigned>(frames.w);
    const auto h = static_cast<unsigned>(frames.h);
    Contest contest{job.name + (", " + std::to_string(w) + "x" + std::to_string(h)), double(w) * h, {}};
    const auto src = std::make_shared<Ko::Image<>>(job.from);
    src->size(w, h);
    share(*src, frames.packed, frames.plane);
    const auto dst = std::make_shared<Ko::Image<>>(job.to);
    const bool turned = job.routine == rotateQuarter;
    dst->size(turned ? h : w, turned ? w : h);
    share(*dst, frames.packedOut, frames.planeOut);
    Ko::KernelLevel best = Ko::KernelLevel::portable;
    for (const Level& level : levels) {
        if (!Ko::kernelsOf(level.level) || (only && level.level != *only))
            continue;
        best = level.level;
        contest.contenders.push_back({level.name, Side::ours, [=, routine = job.routine, forced = level.level] {
                                          Ko::useKernels(forced);
                                          routine(*dst, *src);
                                      }});
    }
    if (job.throughConvertIm) {
        contest.contenders.push_back({"convertIm", Side::ours, [=] {
                                          Ko::useKernels(best);
                                          Ko::convertIm(*dst, *src);
                                      }});
        contest.contenders.push_back({"convertIm, new image", Side::ours, [=, to = job.to] {
                                          Ko::useKernels(best);
                                          Ko::Image<> fresh(to);
                                          Ko::convertIm(fresh, *src);
                                      }});
    }
    for (const Peer& peer : peers)
        if (peer.job == job.name)
            contest.contenders.push_back({peer.name, Side::peer, [=, run = peer.run] {
                                              run(frames);
                                          }});
    const bool grey = job.from == Ko::PF_Y || job.to == Ko::PF_Y;
    const std::size_t bytes = (bytesOf(*src, grey) + bytesOf(*dst, job.to == Ko::PF_Y)) / 2;
    contest.contenders.push_back({"memcpy", Side::bound, [=] {
                                      const Frames plain = spare->frames();
                                      std::memcpy(plain.packedOut, plain.packed, bytes);
                                  }});
    return contest;
}

/// What --level= names, taken out of the arguments. OpenCV is told by starting anew.
std::optional<Ko::KernelLevel> takeLevel(int& argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument.compare(0, 8, "--level=") != 0)
            continue;
        const Level* found = nullptr;
        for (const Level& level : levels)
            if (argument.substr(8) == level.name && Ko::kernelsOf(level.level))
                found = &level;
        if (!found) {
            std::cerr << "This processor has no " << argument.substr(8) << ".\n";
            std::exit(2);
        }
#ifdef BENCH_OPENCV
        if (!std::getenv("OPENCV_CPU_DISABLE")) {
            setenv("OPENCV_CPU_DISABLE", opencvFeaturesBeyond(found->level), 1);
            execv("/proc/self/exe", argv);
            std::perror("execv");
            std::exit(1);
        }
#endif
        std::copy(argv + i + 1, argv + argc + 1, argv + i);
        --argc;
        return found->level;
    }
    return {};
}

} // namespace

int main(int argc, char** argv) {
    const std::optional<Ko::KernelLevel> only = takeLevel(argc, argv);
    std::vector<Peer> peers;
    const auto add = [&](std::vector<Peer> more) {
        peers.insert(peers.end(), more.begin(), more.end());
    };
#ifdef BENCH_LIBYUV
    if (only)
        limitLibyuv(*only);
    add(libyuvPeers());
#endif
#ifdef BENCH_OPENCV
    add(opencvPeers());
#endif
#ifdef BENCH_SWSCALE
    if (only)
        limitSwscale(*only);
    add(swscalePeers());
#endif
    if (peers.empty())
        std::cout << "No peers were found when this was built.\n";
    constexpr std::pair<std::size_t, std::size_t> sizes[] = {{640, 480}, {1920, 1080}, {3840, 2160}};
    std::vector<Contest> contests;
    for (const auto& [w, h] : sizes) {
        const auto spare = std::make_shared<SpareMemory>(w, h);
        for (const Job& job : jobs)
            contests.push_back(contestOf(job, spare, peers, only));
    }
    for (Contest& contest : scalingContests(only))
        contests.push_back(std::move(contest));
    return runContests(argc, argv, contests, {"million pixels a second", 1e6, true});
}
