// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ImageFile.h"

#include "BareStills.h"
#include "support/ConversionOracle.h"
#include "support/TempDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <tuple>

namespace {

using namespace test;
using testing::ThrowsMessage;

const std::string notice = "[readPngImage]: Grayscale plus alpha is currently not supported, removing alpha channel.\n";

TEST(Png, DroppedAlphaIsToldOnceARead) {
    for (const auto& [name, text] : {std::pair{"grey_alpha_8", notice}, {"grey_8", ""}, {"rgba_8", ""}}) {
        Image im(Ko::PF_YCC444P);
        testing::internal::CaptureStdout();
        Ko::readPngImage(im, std::string(STILLS "png/") + name + ".png");
        EXPECT_EQ(testing::internal::GetCapturedStdout(), text) << name;
    }
}

TEST(Png, WritesPlainRgb) {
    const TempDirectory directory;
    const std::string path = directory.file("a.png");
    for (const Ko::PIXEL_FORMAT format : {Ko::PF_RGB, Ko::PF_YCC444P}) {
        const Image im = randomImage(format, 37, 19);
        Ko::writePngImage(path, im);
        const std::string bytes = fileBytes(path);
        Image back(Ko::PF_RGB);
        Ko::readPngImage(back, path);
        EXPECT_EQ(difference(back, inFormat(Ko::PF_RGB, im)), "");
        EXPECT_EQ(bytes.substr(16, 13),
                  std::string("\0\0\0\x25\0\0\0\x13\x8\2\0\0\0", 13)); // 8 bits, RGB, not interlaced
        EXPECT_EQ(bytes.substr(37, 4), "IDAT");                        // and nothing between header and pixels,
        EXPECT_EQ(bytes.substr(bytes.size() - 8, 4), "IEND");          // nor after them
    }
}

TEST(Jpeg, WritesOneKindOfFile) {
    const TempDirectory directory;
    const std::string path = directory.file("a.jpg");
    for (const Ko::PIXEL_FORMAT format : {Ko::PF_JFIF, Ko::PF_YCC444P}) {
        const Image im = randomImage(format, 37, 19);
        Ko::writeJpegImage(path, im);
        const Image jfif = inFormat(Ko::PF_JFIF, im);
        // Bare libjpeg makes the same bytes of the same settings.
        bench::BarePicture picture;
        picture.size(im.width, im.height);
        std::copy_n(jfif.plane[0].data, picture.bytes.size(), picture.bytes.begin());
        bench::writeBareJpeg(directory.file("bare.jpg"), picture);
        EXPECT_EQ(fileBytes(path), fileBytes(directory.file("bare.jpg"))) << fmt2string(format);
    }
}

/// The settings, as files tell them: the first factor of the quantisation and the luma's sampling.
TEST(Jpeg, TakesQualityAndSampling) {
    const TempDirectory directory;
    const std::string path = directory.file("a.jpg");
    const Image im = randomImage(Ko::PF_JFIF, 37, 19);
    for (const auto& [quality, sampling, factor, block] : {std::tuple{100u, Ko::CS_420, '\1', '\x22'},
                                                           {75u, Ko::CS_422, '\x8', '\x21'},
                                                           {50u, Ko::CS_444, '\x10', '\x11'}}) {
        Ko::writeJpegImage(path, im, quality, sampling);
        const std::string bytes = fileBytes(path);
        EXPECT_EQ(bytes[bytes.find("\xff\xdb") + 5], factor) << quality;
        EXPECT_EQ(bytes[bytes.find("\xff\xc0") + 11], block) << quality;
    }
    for (const unsigned quality : {0u, 101u})
        EXPECT_THAT([&] { Ko::writeJpegImage(directory.file("none.jpg"), im, quality); },
                    ThrowsMessage<std::logic_error>("[writeJpegImage]: Quality must be 1 to 100."));
    EXPECT_THROW(Ko::writeJpegImage(path, im, 90, static_cast<Ko::ChromaSampling>(3)), std::logic_error);
}

TEST(Png, TakesALevelOfCompression) {
    const TempDirectory directory;
    Image im = randomImage(Ko::PF_RGB, 100, 100);
    fill(im, 7);
    std::uintmax_t before = 1u << 20;
    for (const unsigned level : {0u, 1u, 9u}) {
        const std::string path = directory.file("a.png");
        Ko::writePngImage(path, im, level);
        Image back(Ko::PF_RGB);
        Ko::readImage(back, path);
        EXPECT_EQ(difference(back, im), "");
        EXPECT_LT(fileBytes(path).size(), before);
        before = fileBytes(path).size();
    }
    EXPECT_THAT([&] { Ko::writePngImage(directory.file("none.png"), im, 10); },
                ThrowsMessage<std::logic_error>("[writePngImage]: Level must be 0 to 9."));
}

TEST(Jpeg, SizesThatJpegHasNotAreRefused) {
    const TempDirectory directory;
    const std::string path = directory.write("a.jpg", "something older");
    EXPECT_THAT([&] { Ko::writeJpegImage(path, randomImage(Ko::PF_JFIF, 65501, 1)); },
                ThrowsMessage<std::runtime_error>(
                    "[writeJpegImage]: libjpeg failed. (Maximum supported image dimension is 65500 pixels)"));
    EXPECT_EQ(fileBytes(path), "something older");
}

} // namespace
