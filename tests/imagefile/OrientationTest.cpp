// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ImageFile.h"

#include "support/Rows.h"
#include "support/TempDirectory.h"
#include "support/TestImages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using namespace test;
using testing::ThrowsMessage;

template <std::size_t size>
std::string raw(const char (&text)[size]) {
    return {text, size - 1};
}

std::string big(std::size_t value, int bytes) {
    std::string text;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        text += static_cast<char>(value >> shift);
    return text;
}
std::string little(std::size_t value, int bytes) {
    const std::string text = big(value, bytes);
    return {text.rbegin(), text.rend()};
}

/// EXIF data whose directory holds the picture's width, and then the orientation, a number of that type.
std::string exif(std::size_t value, bool bigEnd = true, std::size_t type = 3, std::size_t entries = 2) {
    const auto number = bigEnd ? big : little;
    const auto entry = [&](std::size_t tag, std::size_t entryType, std::size_t content) {
        return number(tag, 2) + number(entryType, 2) + number(1, 4) + number(content, 2) + number(0, 2);
    };
    return (bigEnd ? raw("MM\0*") : raw("II*\0")) + number(10, 4) + "??" + number(entries, 2) + entry(0x100, 3, 8) +
           entry(0x112, type, value) + number(0, 4);
}

std::string segment(int marker, const std::string& content) {
    return '\xFF' + big(static_cast<unsigned>(marker), 1) + big(content.size() + 2, 2) + content;
}
const std::string jpegStart = raw("\xFF\xD8\xFF\xE0\0\x04hi"); // with a first segment
std::string jpeg(const std::string& exifData) {
    return jpegStart + segment(0xE1, raw("Exif\0\0") + exifData);
}
std::string png(const std::string& chunks) {
    return "\x89PNG\r\n\x1a\n" + big(3, 4) + "IHDRabc#sum" + chunks;
}

struct Still : Row {
    std::string bytes;
    int orientation;
};
class Orientations : public testing::TestWithParam<Still> {};

TEST_P(Orientations, AreReadFromMemoryAndFiles) {
    const std::string& bytes = GetParam().bytes;
    EXPECT_EQ(Ko::readOrientation(bytes.data(), bytes.size()), GetParam().orientation);
    const TempDirectory directory;
    EXPECT_EQ(Ko::readOrientation(directory.write("a.png", bytes)), GetParam().orientation) << "contents decide";
}

const std::string far = raw("MM\0*\xFF\xFF\xFF\xF0"); // a directory that lies nowhere
INSTANTIATE_TEST_SUITE_P(
    All, Orientations,
    testing::Values(
        Still{{"BigEnd"}, jpeg(exif(6)), 6}, Still{{"LittleEnd"}, jpeg(exif(8, false)), 8},
        Still{{"First"}, jpeg(exif(1)), 1}, Still{{"Zero"}, jpeg(exif(0)), 1}, Still{{"Nine"}, jpeg(exif(9)), 1},
        Still{{"High"}, jpeg(exif(0x0600)), 1}, Still{{"NoShort"}, jpeg(exif(6, true, 4)), 1},
        Still{{"NotCounted"}, jpeg(exif(6, true, 3, 1)), 1}, Still{{"TooMany"}, jpeg(exif(6, true, 3, 0xFFFF)), 6},
        Still{{"CutInEntry"}, jpeg(exif(6).substr(0, 33)), 1}, Still{{"NoOrder"}, jpeg("XX" + exif(6).substr(2)), 1},
        Still{{"Nowhere"}, jpeg(far), 1}, Still{{"Empty"}, jpeg(""), 1}, Still{{"NoExif"}, jpegStart, 1},
        Still{{"OtherApp1"}, jpegStart + segment(0xE1, "http") + jpeg(exif(5)).substr(2), 5},
        Still{{"Filled"}, jpegStart + raw("\xFF\x01\xFF\xD0\xFF\xFF\xFF") + jpeg(exif(7)).substr(2), 7},
        Still{{"BehindThePicture"}, jpegStart + segment(0xDA, "") + jpeg(exif(6)).substr(2), 1},
        Still{{"BehindTheEnd"}, jpegStart + raw("\xFF\xD9") + jpeg(exif(6)).substr(2), 1},
        Still{{"PngFarDirectory"},
              png(big(86, 4) + "eXIf" + raw("MM\0*") + big(60, 4) + std::string(52, '?') + exif(4).substr(10)),
              4},
        Still{{"ShortLength"}, jpegStart + raw("\xFF\xE2\0\x01") + jpeg(exif(6)).substr(2), 1},
        Still{{"Cut"}, jpeg(exif(6)).substr(0, 9), 1}, Still{{"Pgm"}, "P5 1 1 255\n" + exif(6), 1},
        Still{{"Png"}, png(big(4, 4) + "IDATabcd#sum" + big(38, 4) + "eXIf" + exif(3)), 3},
        Still{{"PngEnded"}, png(big(0, 4) + "IEND#sum" + big(38, 4) + "eXIf" + exif(3)), 1},
        Still{{"PngFarChunk"}, png(big(0xFFFFFFFF, 4) + "tEXt"), 1},
        Still{{"PngLongExif"}, png(big(0xFFFFFFFF, 4) + "eXIf" + exif(2)), 2},
        // Written by exiftool.
        Still{{"RealJpeg"}, fileBytes(STILLS "jpeg/ycc_exif_rotated.jpg"), 6},
        Still{{"RealPng"}, fileBytes(STILLS "png/grey_4_exif_rotated.png"), 3}),
    rowName);

TEST(Orientation, OfWhatCannotBeReadIsRefused) {
    EXPECT_THAT(
        [] { Ko::readOrientation("none.jpg"); },
        ThrowsMessage<std::runtime_error>("[readOrientation]: Cannot open none.jpg: No such file or directory."));
    EXPECT_THAT([] { Ko::readOrientation("a.bmp"); },
                ThrowsMessage<std::logic_error>("[readOrientation]: Cannot read a.bmp: extension not recognized."));
    EXPECT_THROW(Ko::readOrientation("jpg"), std::out_of_range);
    for (const char* bytes : {"GIF89a", ""})
        EXPECT_THAT([&] { Ko::readOrientation(bytes, std::string(bytes).size()); },
                    ThrowsMessage<std::runtime_error>("[readOrientation]: No known still."));
}

} // namespace
