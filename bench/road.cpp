// SPDX-License-Identifier: BSD-2-Clause
// Video files: what reading, writing, the whole road and seeking cost beside libav alone and beside OpenCV.
#include "BareLibav.h"
#include "Contest.h"

#include "Kovanta/ConvertIm.h"
#include "Kovanta/Draw.h"
#include "Kovanta/VideoInput.h"
#include "Kovanta/VideoOutput.h"

#ifdef BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>
#endif

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <stdexcept>

namespace {

using namespace bench;

// --size=WxH takes another size, and fewer frames of it.
int width = 1280;
int height = 720;
int frames = 75;
constexpr int seeks = 10;
constexpr int bitRate = 4000000;
constexpr Ko::YCCColor green{173, 42, 26};

struct Folder {
    Folder() {
        std::string name = (std::filesystem::temp_directory_path() / "kovanta-bench-XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("mkdtemp");
        path = name;
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    std::string operator/(const char* name) const { return (path / name).string(); }
    std::filesystem::path path;
};

/// A gradient that moves, with some noise for the encoder.
Ko::Image<> frameNumber(int n) {
    Ko::Image<> im(Ko::PF_YCC444P);
    im.size(static_cast<unsigned>(width), static_cast<unsigned>(height));
    std::minstd_rand random(static_cast<unsigned int>(n) + 1);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            im.plane[0].view[y][x] = static_cast<unsigned char>(16 + (x + y + 4 * n) / 8 % 200 + random() % 4);
            im.plane[1].view[y][x] = static_cast<unsigned char>(96 + x / 40);
            im.plane[2].view[y][x] = static_cast<unsigned char>(96 + y / 40);
        }
    return im;
}

void draw(Ko::Image<>& im) {
    Ko::drawBbox(im, Ko::Bbox<int>{200, 200, 600, 500}, green, false);
}

/// Writes a file of the frames that feed(sink) writes.
template <class Feed>
void write(const std::string& file, Feed feed) {
    Ko::VideoOutputVideoFile out;
    out.setEncoder("mpeg4").open(static_cast<unsigned>(width), static_cast<unsigned>(height), file, {25, 1}, bitRate);
    feed(out);
    out.close();
}

template <class Target>
std::vector<Target> targets(Target length) {
    std::minstd_rand random(5);
    std::vector<Target> all;
    for (int i = 0; i < seeks; ++i)
        all.push_back(static_cast<Target>(random()) % length);
    return all;
}

/// @return what the contests' names end in
std::string takeSize(int& argc, char** argv) {
    char** const end = argv + argc;
    char** const found =
        std::find_if(argv + 1, end, [](const char* a) { return std::sscanf(a, "--size=%dx%d", &width, &height) == 2; });
    if (found == end)
        return {};
    frames = 16;
    std::copy(found + 1, end + 1, found); // with the null behind the last
    --argc;
    return ", " + std::to_string(width) + "x" + std::to_string(height);
}

} // namespace

int main(int argc, char** argv) {
    const std::string size = takeSize(argc, argv);
    const Folder folder;
    const std::string source = folder / "source.mp4";
    const std::string target = folder / "target.mp4";
    std::vector<Ko::Image<>> some;
    for (int n = 0; n < 8; ++n)
        some.push_back(frameNumber(n));
    write(source, [&](Ko::VideoOutputVideoFile& out) {
        for (int n = 0; n < frames; ++n)
            out.write(some[static_cast<std::size_t>(n % 8)]);
    });
    Ko::Image<> im(Ko::PF_YCC444P);
    Ko::Image<> picture(Ko::PF_YCC420P);

    Contest decode{"read into 4:4:4" + size, static_cast<double>(frames), {}};
    decode.contenders.push_back({"VideoInputVideoFile", Side::ours, [&] {
                                     Ko::VideoInputVideoFile in(source);
                                     while (in.read(im)) {
                                     }
                                 }});
    decode.contenders.push_back({"libav and convertIm", Side::peer, [&] {
                                     BareReader in(source);
                                     while (const AVFrame* shown = in.next()) {
                                         wrap(picture, *shown);
                                         Ko::convertIm(im, picture);
                                     }
                                 }});

    Contest encode{"write from 4:4:4" + size, static_cast<double>(frames), {}};
    encode.contenders.push_back({"VideoOutputVideoFile", Side::ours, [&] {
                                     write(target, [&](Ko::VideoOutputVideoFile& out) {
                                         for (int n = 0; n < frames; ++n)
                                             out.write(some[static_cast<std::size_t>(n % 8)]);
                                     });
                                 }});
    encode.contenders.push_back({"libav and convertIm", Side::peer, [&] {
                                     BareWriter out(target, width, height, bitRate);
                                     for (int n = 0; n < frames; ++n) {
                                         wrap(picture, *out.picture());
                                         Ko::convertIm(picture, some[static_cast<std::size_t>(n % 8)]);
                                         out.encode();
                                     }
                                     out.close();
                                 }});

    Contest road{"read, draw a box, write" + size, static_cast<double>(frames), {}};
    road.contenders.push_back({"ours", Side::ours, [&] {
                                   Ko::VideoInputVideoFile in(source);
                                   write(target, [&](Ko::VideoOutputVideoFile& out) {
                                       while (in.read(im)) {
                                           draw(im);
                                           out.write(im);
                                       }
                                   });
                               }});
    road.contenders.push_back({"libav and convertIm", Side::peer, [&] {
                                   BareReader in(source);
                                   BareWriter out(target, width, height, bitRate);
                                   while (const AVFrame* shown = in.next()) {
                                       wrap(picture, *shown);
                                       Ko::convertIm(im, picture);
                                       draw(im);
                                       wrap(picture, *out.picture());
                                       Ko::convertIm(picture, im);
                                       out.encode();
                                   }
                                   out.close();
                               }});

    Contest seek{"seek and read" + size, seeks, {}};
    Ko::VideoInputVideoFile seeker(source);
    seek.contenders.push_back({"VideoInputVideoFile", Side::ours, [&] {
                                   for (const long to : targets(seeker.getLength())) {
                                       seeker.seek(to, Ko::VP_BEGIN);
                                       seeker.read(im);
                                   }
                               }});
    BareReader bareSeeker(source);
    seek.contenders.push_back({"libav and convertIm", Side::peer, [&] {
                                   for (const long to : targets(seeker.getLength())) {
                                       bareSeeker.seek(to);
                                       if (const AVFrame* shown = bareSeeker.next()) {
                                           wrap(picture, *shown);
                                           Ko::convertIm(im, picture);
                                       }
                                   }
                               }});

#ifdef BENCH_OPENCV
    cv::Mat mat;
    const int fourcc = cv::VideoWriter::fourcc('m', 'p', '4', 'v');
    decode.contenders.push_back({"OpenCV (BGR)", Side::peer, [&] {
                                     cv::VideoCapture in(source, cv::CAP_FFMPEG);
                                     while (in.read(mat)) {
                                     }
                                 }});
    std::vector<cv::Mat> mats;
    cv::VideoCapture first(source, cv::CAP_FFMPEG);
    for (int n = 0; n < 8 && first.read(mat); ++n)
        mats.push_back(mat.clone());
    encode.contenders.push_back({"OpenCV (BGR)", Side::peer, [&] {
                                     cv::VideoWriter out(target, cv::CAP_FFMPEG, fourcc, 25, {width, height});
                                     for (int n = 0; n < frames; ++n)
                                         out.write(mats[static_cast<std::size_t>(n % 8)]);
                                 }});
    road.contenders.push_back({"OpenCV (BGR)", Side::peer, [&] {
                                   cv::VideoCapture in(source, cv::CAP_FFMPEG);
                                   cv::VideoWriter out(target, cv::CAP_FFMPEG, fourcc, 25, {width, height});
                                   while (in.read(mat)) {
                                       cv::rectangle(mat, {200, 200}, {600, 500}, {0, 255, 0});
                                       out.write(mat);
                                   }
                               }});
    cv::VideoCapture capture(source, cv::CAP_FFMPEG);
    seek.contenders.push_back({"OpenCV (BGR)", Side::peer, [&] {
                                   for (const int to : targets(frames)) {
                                       capture.set(cv::CAP_PROP_POS_FRAMES, to);
                                       capture.read(mat);
                                   }
                               }});
#endif
    const std::vector<Contest> contests = {decode, encode, road, seek};
    return runContests(argc, argv, contests, {"frames a second", 1, false});
}
