// SPDX-License-Identifier: BSD-2-Clause
// Whether cost stays flat: time per pixel over frame sizes, time and memory per frame over a long file.
// Argument: how many frames the file has (100000 without).
#include "Kovanta/ConvertIm.h"
#include "Kovanta/VideoInput.h"
#include "Kovanta/VideoOutput.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Of this process, in MiB.
double residentMemory() {
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return double(pages) * double(sysconf(_SC_PAGESIZE)) / (1 << 20);
}

double nanosecondsPerPixel(Ko::PIXEL_FORMAT to, Ko::PIXEL_FORMAT from, unsigned int w, unsigned int h) {
    Ko::Image<> src(from);
    src.size(w, h);
    for (auto& plane : src.plane)
        if (plane.data)
            std::fill_n(plane.data, std::size_t{plane.width} * plane.height, static_cast<unsigned char>(90));
    Ko::Image<> dst(to);
    Ko::convertIm(dst, src);
    std::vector<double> times;
    for (int round = 0; round < 25; ++round) {
        const int repeats = std::max(1, static_cast<int>(4000000 / (w * h)));
        const auto start = Clock::now();
        for (int i = 0; i < repeats; ++i)
            Ko::convertIm(dst, src);
        times.push_back(secondsSince(start) * 1e9 / repeats / w / h);
    }
    return *std::min_element(times.begin(), times.end());
}

void overSizes() {
    constexpr std::pair<unsigned int, unsigned int> sizes[] = {
        {320, 240}, {640, 480}, {1280, 720}, {1920, 1080}, {3840, 2160}};
    struct {
        const char* name;
        Ko::PIXEL_FORMAT to;
        Ko::PIXEL_FORMAT from;
    } const pairs[] = {{"RGB to 4:4:4", Ko::PF_YCC444P, Ko::PF_RGB},
                       {"4:4:4 to RGB", Ko::PF_RGB, Ko::PF_YCC444P},
                       {"4:2:0 to 4:4:4", Ko::PF_YCC444P, Ko::PF_YCC420P},
                       {"4:4:4 to 4:2:0", Ko::PF_YCC420P, Ko::PF_YCC444P}};
    std::puts("nanoseconds a pixel, best of 25");
    for (const auto& pair : pairs) {
        std::printf("%s", pair.name);
        for (const auto& [w, h] : sizes)
            std::printf(" | %ux%u %.3f", w, h, nanosecondsPerPixel(pair.to, pair.from, w, h));
        std::puts("");
    }
}

void overFrames(int frames, const std::string& file) {
    constexpr unsigned int w = 160;
    constexpr unsigned int h = 120;
    const int part = std::max(1, frames / 10);
    Ko::Image<> im(Ko::PF_YCC444P);
    im.size(w, h);
    std::puts("frames handled | writing, microseconds a frame | resident MiB");
    {
        Ko::VideoOutputVideoFile out(w, h, file, {25, 1}, 200000);
        auto start = Clock::now();
        for (int n = 0; n < frames; ++n) {
            for (auto& plane : im.plane)
                if (plane.data)
                    std::fill_n(plane.data, std::size_t{w} * h, static_cast<unsigned char>(60 + n % 100));
            out.write(im);
            if ((n + 1) % part == 0) {
                std::printf("%d | %.1f | %.1f\n", n + 1, secondsSince(start) * 1e6 / part, residentMemory());
                start = Clock::now();
            }
        }
    }
    std::puts("frames handled | reading, microseconds a frame | resident MiB");
    Ko::VideoInputVideoFile in(file);
    auto start = Clock::now();
    for (int n = 0; in.read(im); ++n)
        if ((n + 1) % part == 0) {
            std::printf("%d | %.1f | %.1f\n", n + 1, secondsSince(start) * 1e6 / part, residentMemory());
            start = Clock::now();
        }
}

} // namespace

int main(int argc, char** argv) {
    const int frames = argc > 1 ? std::atoi(argv[1]) : 100000;
    overSizes();
    std::string folder = (std::filesystem::temp_directory_path() / "kovanta-growth-XXXXXX").string();
    if (!mkdtemp(folder.data()))
        return 1;
    overFrames(frames, folder + "/long.avi");
    std::filesystem::remove_all(folder);
    return 0;
}
