#include "videoout/Programs.h"

#include "Kovanta/ConvertIm.h"
#include "support/TempDirectory.h"
#include "support/VideoMedia.h"

#include <cstdio>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace test {

namespace {

std::string outputOf(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    if (!pipe)
        throw std::runtime_error("cannot run " + command);
    std::string text;
    char part[65536];
    while (const std::size_t n = std::fread(part, 1, sizeof part, pipe.get()))
        text.append(part, n);
    return text;
}

} // namespace

Decoded decode(const std::string& file, unsigned int width, unsigned int height) {
    const std::string log = file + ".log";
    Decoded decoded;
    // Twice at once: as it is, and through the time stamps' way to a constant rate, which complains about bad ones.
    decoded.yuv = outputOf("ffmpeg -nostdin -v warning -i '" + file + "' -f null - -fps_mode passthrough" +
                           " -f rawvideo -pix_fmt yuv420p pipe:1 2>'" + log + "'");
    decoded.complaints = testing_support::fileBytes(log);
    const std::size_t chromaWidth = (width + 1) / 2;
    const std::size_t luma = std::size_t{width} * height;
    const std::size_t chroma = chromaWidth * ((height + 1) / 2);
    Ko::Image<unsigned char> wrapper(Ko::PF_YCC420P);
    wrapper.size(width, height, false);
    Ko::Image<unsigned char> frame(Ko::PF_YCC444P);
    for (std::size_t at = 0; at + luma + 2 * chroma <= decoded.yuv.size(); at += luma + 2 * chroma) {
        auto* plane = reinterpret_cast<unsigned char*>(&decoded.yuv[at]);
        for (std::size_t p = 0; p < 3; plane += p == 0 ? luma : chroma, ++p)
            for (std::size_t y = 0; y < wrapper.plane[p].height; ++y)
                wrapper.plane[p].rows[y] = plane + y * (p == 0 ? width : chromaWidth);
        Ko::convertIm(frame, wrapper);
        decoded.numbers.push_back(frameIndex(frame));
    }
    return decoded;
}

std::string probe(const std::string& file, const std::string& entries) {
    std::istringstream lines(outputOf("ffprobe -v error -count_frames -select_streams v:0 -show_entries " + entries +
                                      " -of csv=p=0 '" + file + "'"));
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        line.erase(line.find_last_not_of(',') + 1); // side data leave a comma and an empty line
        if (line.empty())
            continue;
        text += (text.empty() ? "" : "\n") + line;
        if (entries.rfind("stream=", 0) == 0)
            break; // containers with programs name their streams twice
    }
    return text;
}

} // namespace test
