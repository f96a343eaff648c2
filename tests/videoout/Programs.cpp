// SPDX-License-Identifier: BSD-2-Clause
#include "videoout/Programs.h"

#include "Kovanta/Wrap.h"
#include "support/Commands.h"
#include "support/VideoMedia.h"

namespace test {

namespace {

std::string raw(const std::string& format) {
    return " -fps_mode passthrough -f rawvideo -pix_fmt " + format + " pipe:1 ";
}

} // namespace

Decoded decode(const std::string& file, unsigned int width, unsigned int height) {
    const std::string log = file + ".log";
    // Twice at once: as it is, and through the time stamps' way to a constant rate, which complains about bad ones.
    std::string pictures =
        outputOf("ffmpeg -nostdin -v warning -i '" + file + "' -f null -" + raw("yuv444p") + "2>'" + log + "'");
    Decoded decoded = {{}, test::fileBytes(log)};
    const std::size_t plane = std::size_t{width} * height;
    for (std::size_t at = 0; at + 3 * plane <= pictures.size(); at += 3 * plane) {
        const auto* y = reinterpret_cast<const unsigned char*>(&pictures[at]);
        decoded.numbers.push_back(frameIndex(Ko::wrapConstMemory(
            Ko::PF_YCC444P, width, height, {{y, width}, {y + plane, width}, {y + 2 * plane, width}})));
    }
    return decoded;
}

std::string rawPictures(const std::string& file, const std::string& format) {
    return outputOf("ffmpeg -nostdin -v error -i '" + file + "'" + raw(format));
}

std::string probe(const std::string& file, const std::string& entries) {
    // Containers with programs name their streams twice, side data leave a comma and an empty line.
    const std::string once = entries.rfind("stream=", 0) == 0 ? " | head -1" : "";
    const std::string text = outputOf("ffprobe -v error -count_frames -select_streams v:0 -show_entries " + entries +
                                      " -of csv=p=0 '" + file + "' | sed -E 's/,+$//; /^$/d'" + once);
    return text.substr(0, text.find_last_not_of('\n') + 1);
}

} // namespace test
