// SPDX-License-Identifier: BSD-2-Clause
// Video files read to their end: the library, and the bare libav calls for the same file with the same number of
// threads, followed by the one conversion that both need. What the library adds is the distance between the two.
// Files are 1280 x 720, made with the ffmpeg program in a temporary directory. Arguments are those of Google
// Benchmark, and --table=FILE.
#include "Contest.h"
#include "Kovanta/ConvertIm.h"
#include "Kovanta/VideoInput.h"
#include "Kovanta/Wrap.h"
#include "libav/Handles.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace bench;

constexpr int frameCount = 150;

void must(bool condition, const char* what) {
    if (!condition) {
        std::cerr << what << " failed.\n";
        std::exit(1);
    }
}

void readOurs(const std::string& file, Ko::Image<>& frame) {
    Ko::VideoInputVideoFile in(file);
    int count = 0;
    while (in.read(frame))
        ++count;
    must(count == frameCount, "Reading every frame");
}

void readBare(const std::string& file, Ko::Image<>& frame) {
    AVFormatContext* opened = nullptr;
    must(avformat_open_input(&opened, file.c_str(), nullptr, nullptr) == 0, "avformat_open_input");
    const Ko::libav::InputContextHandle container(opened);
    must(avformat_find_stream_info(opened, nullptr) >= 0, "avformat_find_stream_info");
    const AVCodec* decoder = avcodec_find_decoder(opened->streams[0]->codecpar->codec_id);
    const Ko::libav::CodecContextHandle codec(avcodec_alloc_context3(decoder));
    avcodec_parameters_to_context(codec.get(), opened->streams[0]->codecpar);
    codec->thread_count = 0;
    must(avcodec_open2(codec.get(), decoder, nullptr) == 0, "avcodec_open2");

    const Ko::libav::PacketHandle packet(av_packet_alloc());
    const Ko::libav::FrameHandle picture(av_frame_alloc());
    Ko::Image<> wrapper(codec->pix_fmt == AV_PIX_FMT_YUV420P ? Ko::PF_YCC420P : Ko::PF_JFIF422P);
    int count = 0;
    for (int result = 0; result != AVERROR_EOF;) {
        result = avcodec_receive_frame(codec.get(), picture.get());
        if (result == 0) {
            Ko::rewrapMemory(wrapper, static_cast<unsigned>(codec->width), static_cast<unsigned>(codec->height),
                             {{picture->data[0], picture->linesize[0]},
                              {picture->data[1], picture->linesize[1]},
                              {picture->data[2], picture->linesize[2]}});
            Ko::convertIm(frame, wrapper);
            ++count;
        } else if (result == AVERROR(EAGAIN)) {
            const bool more = av_read_frame(opened, packet.get()) >= 0;
            avcodec_send_packet(codec.get(), more ? packet.get() : nullptr);
            av_packet_unref(packet.get());
        }
    }
    must(count == frameCount, "Decoding every frame");
}

} // namespace

int main(int argc, char** argv) {
    const std::filesystem::path directory = std::filesystem::temp_directory_path() / "kovanta-bench-videoread";
    std::filesystem::create_directories(directory);
    const struct {
        const char* name;
        const char* options;
    } files[] = {
        {"H.264 with B-frames, mp4", "-pix_fmt yuv420p -c:v libx264 -preset veryfast -bf 2 h264.mp4"},
        {"MPEG-4, avi", "-pix_fmt yuv420p -c:v mpeg4 -q:v 4 mpeg4.avi"},
        {"Motion JPEG 4:2:2, avi", "-pix_fmt yuvj422p -c:v mjpeg -q:v 4 mjpeg.avi"},
        {"uncompressed 4:2:0, y4m", "-pix_fmt yuv420p raw.y4m"},
    };
    Ko::Image<> frame(Ko::PF_YCC444P);
    std::vector<Contest> contests;
    for (const auto& each : files) {
        const std::string options = each.options;
        const std::string file = (directory / options.substr(options.rfind(' ') + 1)).string();
        const std::string command = "ffmpeg -v error -y -f lavfi -i testsrc2=s=1280x720:r=25 -frames:v " +
                                    std::to_string(frameCount) + " " + options.substr(0, options.rfind(' ')) + " '" +
                                    file + "'";
        must(std::system(command.c_str()) == 0, "ffmpeg");
        contests.push_back({each.name,
                            double{frameCount},
                            {{"Kovanta", Side::ours,
                              [&frame, file] {
                                  readOurs(file, frame);
                              }},
                             {"bare libav and convertIm", Side::bound, [&frame, file] {
                                  readBare(file, frame);
                              }}}});
    }
    const int result = runContests(argc, argv, contests, {"frames/s", 1, false});
    std::filesystem::remove_all(directory);
    return result;
}
