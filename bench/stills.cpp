// SPDX-License-Identifier: BSD-2-Clause
// Stills read and written: the library, the bare calls of libjpeg and libpng doing the same job, and OpenCV's imread
// and imwrite. Files are 1280 x 720, in a temporary directory; set TMPDIR to a memory file system to leave the disk
// out. Arguments are those of Google Benchmark, and --table=FILE.
#include "BareStills.h"
#include "Contest.h"

#include "Kovanta/ConvertIm.h"
#include "Kovanta/ImageFile.h"

#ifdef BENCH_OPENCV
#include <opencv2/imgcodecs.hpp>
#endif

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace bench;

constexpr unsigned width = 1280;
constexpr unsigned height = 720;

/// Smooth shapes with a little noise, about as hard to code as a photograph.
Ko::Image<> photograph() {
    Ko::Image<> im(Ko::PF_RGB);
    im.size(width, height);
    std::mt19937 random(1);
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x) {
            const unsigned shape = (x / 97 + y / 61) % 5 * 30;
            for (unsigned c = 0; c < 3; ++c)
                im.plane[0].view[y][3 * x + c] =
                    static_cast<unsigned char>(40 + shape + (x * (c + 1) + y * 2) / 64 % 64 + random() % 6);
        }
    return im;
}

BarePicture bare(const Ko::Image<>& im) {
    BarePicture picture;
    picture.size(im.width, im.height);
    std::copy_n(im.plane[0].data, picture.bytes.size(), picture.bytes.begin());
    return picture;
}

} // namespace

int main(int argc, char** argv) {
    const std::filesystem::path directory = std::filesystem::temp_directory_path() / "kovanta-bench-stills";
    std::filesystem::create_directories(directory);
    const auto file = [&](const char* name) {
        return (directory / name).string();
    };

    const Ko::Image<> rgb = photograph();
    Ko::Image<> ycc(Ko::PF_YCC444P);
    Ko::convertIm(ycc, rgb);
    Ko::Image<> jfif(Ko::PF_JFIF);
    Ko::convertIm(jfif, ycc);
    BarePicture bareRgb = bare(rgb);
    BarePicture bareJfif = bare(jfif);
    Ko::Image<> intoRgb(Ko::PF_RGB);
    Ko::Image<> intoJfif(Ko::PF_JFIF);
    Ko::Image<> intoYcc(Ko::PF_YCC444P);
    BarePicture intoBare;
    Ko::writeImage(file("in.ppm"), rgb);
    Ko::writeImage(file("in.jpg"), jfif);
    Ko::writeImage(file("in.png"), rgb);

    std::vector<Contest> contests = {
        {"read PPM",
         double{width} * height,
         {{"PF_RGB", Side::ours,
           [&] {
               Ko::readImage(intoRgb, file("in.ppm"));
           }},
          {"PF_YCC444P", Side::ours,
           [&] {
               Ko::readImage(intoYcc, file("in.ppm"));
           }},
          {"stdio", Side::peer,
           [&] {
               readBarePixmap(intoBare, file("in.ppm"));
           }}}},
        {"write PPM",
         double{width} * height,
         {{"PF_RGB", Side::ours,
           [&] {
               Ko::writeImage(file("out.ppm"), rgb);
           }},
          {"PF_YCC444P", Side::ours,
           [&] {
               Ko::writeImage(file("out.ppm"), ycc);
           }},
          {"stdio", Side::peer,
           [&] {
               writeBarePixmap(file("bare.ppm"), bareRgb);
           }}}},
        {"read JPEG",
         double{width} * height,
         {{"PF_JFIF", Side::ours,
           [&] {
               Ko::readImage(intoJfif, file("in.jpg"));
           }},
          {"PF_YCC444P", Side::ours,
           [&] {
               Ko::readImage(intoYcc, file("in.jpg"));
           }},
          {"libjpeg", Side::peer,
           [&] {
               readBareJpeg(intoBare, file("in.jpg"));
           }}}},
        {"write JPEG",
         double{width} * height,
         {{"PF_JFIF", Side::ours,
           [&] {
               Ko::writeImage(file("out.jpg"), jfif);
           }},
          {"PF_YCC444P", Side::ours,
           [&] {
               Ko::writeImage(file("out.jpg"), ycc);
           }},
          {"libjpeg", Side::peer,
           [&] {
               writeBareJpeg(file("bare.jpg"), bareJfif);
           }}}},
        {"read PNG",
         double{width} * height,
         {{"PF_RGB", Side::ours,
           [&] {
               Ko::readImage(intoRgb, file("in.png"));
           }},
          {"PF_YCC444P", Side::ours,
           [&] {
               Ko::readImage(intoYcc, file("in.png"));
           }},
          {"libpng", Side::peer,
           [&] {
               readBarePng(intoBare, file("in.png"));
           }}}},
        {"write PNG",
         double{width} * height,
         {{"PF_RGB", Side::ours,
           [&] {
               Ko::writeImage(file("out.png"), rgb);
           }},
          {"PF_YCC444P", Side::ours,
           [&] {
               Ko::writeImage(file("out.png"), ycc);
           }},
          {"libpng", Side::peer,
           [&] {
               writeBarePng(file("bare.png"), bareRgb);
           }}}},
    };

#ifdef BENCH_OPENCV
    // Its own order of channels, and quality 100 and zlib's default level, as ours.
    cv::Mat bgr(static_cast<int>(height), static_cast<int>(width), CV_8UC3);
    for (int y = 0; y < bgr.rows; ++y)
        for (int x = 0; x < bgr.cols; ++x)
            for (int c = 0; c < 3; ++c)
                bgr.ptr(y)[3 * x + c] = rgb.plane[0].view[y][3 * x + 2 - c];
    cv::Mat into;
    const char* const extensions[] = {".ppm", ".jpg", ".png"};
    for (std::size_t i = 0; i < 3; ++i) {
        const std::string extension = extensions[i];
        contests[2 * i].contenders.push_back({"imread", Side::peer, [&, in = file("in") + extension] {
                                                  into = cv::imread(in, cv::IMREAD_COLOR);
                                              }});
        const std::vector<int> parameters = extension == ".jpg"   ? std::vector<int>{cv::IMWRITE_JPEG_QUALITY, 100}
                                            : extension == ".png" ? std::vector<int>{cv::IMWRITE_PNG_COMPRESSION, 6}
                                                                  : std::vector<int>{};
        contests[2 * i + 1].contenders.push_back({"imwrite", Side::peer, [&, out = file("cv") + extension, parameters] {
                                                      if (!cv::imwrite(out, bgr, parameters))
                                                          std::abort();
                                                  }});
    }
#endif

    // Nobody is to win by doing another job.
    readBareJpeg(intoBare, file("in.jpg"));
    Ko::readImage(intoJfif, file("in.jpg"));
    bool same = std::equal(intoBare.bytes.begin(), intoBare.bytes.end(), intoJfif.plane[0].data);
    readBarePng(intoBare, file("in.png"));
    Ko::readImage(intoRgb, file("in.png"));
    same = same && std::equal(intoBare.bytes.begin(), intoBare.bytes.end(), intoRgb.plane[0].data);
    int result = EXIT_FAILURE;
    if (same)
        result = runContests(argc, argv, contests, {"million pixels", 1e6, true});
    else
        std::cerr << "The library and the bare calls disagree.\n";
    std::filesystem::remove_all(directory);
    return result;
}
