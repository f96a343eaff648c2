// SPDX-License-Identifier: BSD-2-Clause
#include "support/VideoMedia.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <stdexcept>

namespace test {

namespace {

constexpr int columns = 4;
constexpr int fields = 8;
constexpr int dark = 40;
constexpr int bright = 210;
constexpr int flatChroma[3] = {0, 90, 170};
constexpr int ripple = 4; ///< A fine pattern on top of the fields, so that a row or column gone astray shows.

unsigned char sampleAt(int index, int p, int x, int y, int width, int height) {
    const int pattern = (x + 3 * y) % (2 * ripple) - ripple;
    if (p != 0)
        return static_cast<unsigned char>(flatChroma[p] + pattern);
    const int field = y * 2 / height * columns + x * columns / width;
    return static_cast<unsigned char>(((index >> field & 1) != 0 ? bright : dark) + pattern);
}

bool near(int value, int wanted) {
    return std::abs(value - wanted) <= 16;
}

} // namespace

int frameIndex(const Ko::Image<unsigned char>& frame) {
    const auto width = static_cast<int>(frame.width);
    const auto height = static_cast<int>(frame.height);
    if (frame.format != Ko::PF_YCC444P || width < columns * 2 || height < 4)
        return -1;
    int index = 0;
    for (int field = 0; field < fields; ++field) {
        const int x = (2 * (field % columns) + 1) * width / (2 * columns);
        const int y = (2 * (field / columns) + 1) * height / 4;
        const int luma = frame.plane[0].view[y][x];
        if ((!near(luma, dark) && !near(luma, bright)) || !near(frame.plane[1].view[y][x], flatChroma[1]) ||
            !near(frame.plane[2].view[y][x], flatChroma[2]))
            return -1;
        index |= (near(luma, bright) ? 1 : 0) << field;
    }
    return index;
}

Ko::Image<unsigned char> numberedFrame(int index, int width, int height) {
    Ko::Image<unsigned char> frame(Ko::PF_YCC420P);
    frame.size(static_cast<unsigned int>(width), static_cast<unsigned int>(height));
    for (int p = 0; p < 3; ++p)
        for (std::size_t y = 0; y < frame.plane[p].height; ++y)
            for (std::size_t x = 0; x < frame.plane[p].width; ++x)
                frame.plane[p].view[y][x] = sampleAt(index, p, static_cast<int>(x), static_cast<int>(y), width, height);
    return frame;
}

std::vector<int> indices(int count, int first) {
    std::vector<int> all(static_cast<std::size_t>(count));
    std::iota(all.begin(), all.end(), first);
    return all;
}

void encodeNumbered(const std::string& file, const NumberedFrames& f, const std::string& options,
                    const std::string& inputs) {
    const std::string command = "ffmpeg -nostdin -hide_banner -v error -y " + inputs +
                                " -f rawvideo -pix_fmt yuv420p -s " + std::to_string(f.width) + "x" +
                                std::to_string(f.height) + " -r " + f.rate + " -i pipe:0 " + options + " '" + file +
                                "'";
    std::signal(SIGPIPE, SIG_IGN); // an ffmpeg that ends early is told by its status
    FILE* pipe = popen(command.c_str(), "w");
    for (int i = f.firstIndex; pipe && i < f.firstIndex + f.count; ++i)
        for (int p = 0, round = 0; p < 3; ++p, round = 1) // raw video rounds the chroma's size up
            for (int y = 0; y < (f.height + round) >> round; ++y)
                for (int x = 0; x < (f.width + round) >> round; ++x)
                    std::fputc(sampleAt(i, p, x, y, f.width, f.height), pipe);
    if (!pipe || pclose(pipe) != 0)
        throw std::runtime_error("This command failed: " + command);
}

} // namespace test
