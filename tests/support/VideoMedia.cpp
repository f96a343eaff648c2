#include "support/VideoMedia.h"

#include <sys/wait.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <vector>

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

/// Tight planar 4:2:0, chroma rounded up as raw video has it.
std::vector<unsigned char> rawFrame(int index, int width, int height) {
    std::vector<unsigned char> raw;
    for (int p = 0; p < 3; ++p)
        for (int y = 0; y < (p == 0 ? height : (height + 1) / 2); ++y)
            for (int x = 0; x < (p == 0 ? width : (width + 1) / 2); ++x)
                raw.push_back(sampleAt(index, p, x, y, width, height));
    return raw;
}

const std::string ffmpeg = "ffmpeg -nostdin -hide_banner -v error -y ";

void check(int status, const std::string& command) {
    if (status == -1 || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw std::runtime_error("This command failed: " + command);
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
        if (!near(luma, dark) && !near(luma, bright))
            return -1;
        if (!near(frame.plane[1].view[y][x], flatChroma[1]) || !near(frame.plane[2].view[y][x], flatChroma[2]))
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

void encodeNumbered(const std::string& file, const NumberedFrames& frames, const std::string& options,
                    const std::string& inputs) {
    const std::string command = ffmpeg + inputs + " -f rawvideo -pix_fmt yuv420p -s " + std::to_string(frames.width) +
                                "x" + std::to_string(frames.height) + " -r " + frames.rate + " -i pipe:0 " + options +
                                " '" + file + "'";
    std::signal(SIGPIPE, SIG_IGN); // an ffmpeg that ends early is told by its status
    FILE* pipe = popen(command.c_str(), "w");
    if (!pipe)
        throw std::runtime_error("Cannot run " + command);
    for (int i = 0; i < frames.count; ++i) {
        const std::vector<unsigned char> raw = rawFrame(frames.firstIndex + i, frames.width, frames.height);
        std::fwrite(raw.data(), 1, raw.size(), pipe);
    }
    check(pclose(pipe), command);
}

void runFfmpeg(const std::string& arguments) {
    const std::string command = ffmpeg + arguments;
    check(std::system(command.c_str()), command); // NOLINT(cert-env33-c)
}

} // namespace test
