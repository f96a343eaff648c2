#include "videoout/NumberedFrames.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace numbered {

namespace {

constexpr unsigned int columns = 4;
constexpr unsigned int rows = 2;
constexpr int tolerance = 16;

/// Seven bits of the number and their parity, one a block.
bool isWhite(unsigned int n, unsigned int block) {
    return block < 7 ? (n >> block & 1u) != 0 : __builtin_parity(n) != 0;
}

unsigned char cbOf(unsigned int n) {
    return static_cast<unsigned char>(70 + n);
}
unsigned char crOf(unsigned int n) {
    return static_cast<unsigned char>(190 - n);
}

std::string output(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    if (!pipe)
        throw std::runtime_error("cannot run " + command);
    std::string text;
    std::array<char, 65536> part;
    while (const std::size_t n = std::fread(part.data(), 1, part.size(), pipe.get()))
        text.append(part.data(), n);
    return text;
}

std::string ffprobe(const std::string& file, const std::string& entries) {
    return output("ffprobe -v error -count_frames -select_streams v:0 -show_entries " + entries + " -of csv=p=0 '" +
                  file + "'");
}

/// Mean of the samples around the middle of a cell of a plane.
int meanAt(const unsigned char* plane, unsigned int width, unsigned int height, unsigned int cell) {
    const unsigned int cellWidth = width / columns;
    const unsigned int cellHeight = height / rows;
    const unsigned int x0 = cell % columns * cellWidth + cellWidth / 4;
    const unsigned int y0 = cell / columns * cellHeight + cellHeight / 4;
    const unsigned int w = cellWidth < 2 ? 1 : cellWidth / 2;
    const unsigned int h = cellHeight < 2 ? 1 : cellHeight / 2;
    unsigned int sum = 0;
    for (unsigned int y = 0; y < h; ++y)
        for (unsigned int x = 0; x < w; ++x)
            sum += plane[(y0 + y) * width + x0 + x];
    return static_cast<int>(sum / (w * h));
}

int numberOf(const unsigned char* yuv, unsigned int width, unsigned int height, bool tinted) {
    unsigned int n = 0;
    for (unsigned int block = 0; block < 7; ++block)
        n |= (meanAt(yuv, width, height, block) > 125 ? 1u : 0u) << block;
    if (isWhite(n, 7) != (meanAt(yuv, width, height, 7) > 125))
        return -1;
    const unsigned int w = (width + 1) / 2;
    const unsigned int h = (height + 1) / 2;
    const unsigned char* cb = yuv + width * height;
    const unsigned char* cr = cb + w * h;
    for (unsigned int cell = 0; cell < columns * rows && tinted; ++cell)
        if (std::abs(meanAt(cb, w, h, cell) - cbOf(n)) > tolerance ||
            std::abs(meanAt(cr, w, h, cell) - crOf(n)) > tolerance)
            return -2;
    return static_cast<int>(n);
}

} // namespace

Ko::Image<unsigned char> frame(unsigned int n, unsigned int width, unsigned int height, Ko::PIXEL_FORMAT format) {
    Ko::Image<unsigned char> im(format);
    im.size(width, height);
    for (unsigned int y = 0; y < height; ++y)
        for (unsigned int x = 0; x < width; ++x) {
            const unsigned int column = x * columns / width;
            const unsigned int row = y * rows / height;
            im.plane[0].view[y][x] = isWhite(n, row * columns + column) ? 210 : 40;
        }
    for (int p = 1; p <= 2 && format != Ko::PF_Y; ++p)
        for (unsigned int y = 0; y < im.plane[p].height; ++y)
            for (unsigned int x = 0; x < im.plane[p].width; ++x)
                im.plane[p].view[y][x] = p == 1 ? cbOf(n) : crOf(n);
    return im;
}

Decoded decode(const std::string& file, unsigned int width, unsigned int height, bool tinted) {
    const std::string log = file + ".log";
    // Twice at once: as it is, and through the time stamps' way to a constant rate, which complains about bad ones.
    Decoded decoded;
    decoded.yuv = output("ffmpeg -nostdin -v warning -i '" + file + "' -f null - -fps_mode passthrough" +
                         " -f rawvideo -pix_fmt yuv420p pipe:1 2>'" + log + "'");
    std::stringstream complaints;
    complaints << std::ifstream(log).rdbuf();
    decoded.complaints = complaints.str();
    const std::size_t size = std::size_t{width} * height + 2 * std::size_t{(width + 1) / 2} * ((height + 1) / 2);
    for (std::size_t at = 0; at + size <= decoded.yuv.size(); at += size)
        decoded.numbers.push_back(
            numberOf(reinterpret_cast<const unsigned char*>(decoded.yuv.data()) + at, width, height, tinted));
    return decoded;
}

std::string probe(const std::string& file, const std::string& entries) {
    const std::string lines = ffprobe(file, "stream=" + entries);
    const std::string line = lines.substr(0, lines.find('\n'));
    return line.substr(0, line.find_last_not_of(',') + 1); // where a stream has side data, a comma follows
}

std::vector<long> presentationTimes(const std::string& file) {
    std::istringstream lines(ffprobe(file, "frame=pts"));
    std::vector<long> times;
    for (std::string line; std::getline(lines, line);)
        if (!line.empty())
            times.push_back(std::strtol(line.c_str(), nullptr, 10));
    return times;
}

} // namespace numbered
