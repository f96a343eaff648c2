// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ImageFile.h"

#include "support/MemoryFile.h"
#include "support/TempDirectory.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>
#include <stdexcept>

namespace {

using namespace test;

using Reader = void (*)(Image&, const std::string&);

std::string corpus(const char* name) {
    return fileBytes(std::string(STILLS) + name);
}

/// A progressive JPEG that goes over its picture again and again; the picture is as large as it says.
std::string withManyScans(unsigned width, unsigned height) {
    std::string bytes = corpus("jpeg/grey_progressive.jpg");
    const std::size_t frame = bytes.find("\xFF\xC2");
    for (std::size_t i = 0; i < 4; ++i)
        bytes[frame + 5 + i] = static_cast<char>((height << 16 | width) >> (24 - 8 * i) & 255);
    const std::string scan = bytes.substr(bytes.rfind("\xFF\xDA"), bytes.size() - 2 - bytes.rfind("\xFF\xDA"));
    bytes.resize(bytes.size() - 2);
    for (int i = 0; i < 600; ++i)
        bytes += scan;
    return bytes + "\xFF\xD9";
}

/// Kilobytes of memory that the process holds.
std::size_t resident() {
    std::size_t pages = 0;
    std::ifstream statm("/proc/self/statm");
    statm >> pages >> pages;
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / 1024;
}

// That an image without a picture stays as it was is seen where the corpora are replayed; here are the reasons that are
// given, and that no file costs hundreds of megabytes.
TEST(HostileStills, SayWhatIsWrongAndCostWhatTheyAreWorth) {
    testing::internal::CaptureStderr(); // the libraries' many complaints
    const std::string png = "[readPngImage]: png_error called.", jpeg = "[readJpegImage]: libjpeg failed. ";
    const std::string header = "[ConvertIm::parseHeader]: Incorrect PPM/PGM header.";
    const std::string colors = "[readJpegImage]: Unsupported color space.";
    std::string texts = corpus("png/texts.png");
    const std::size_t at = texts.find("zTXt") - 4;
    const std::string text = texts.substr(at, texts.find("IDAT") - 4 - at); // 7 MB unpacked
    for (int i = 0; i < 100; ++i)
        texts.insert(at, text);
    std::string progressive = corpus("jpeg/grey_progressive.jpg");
    progressive.replace(progressive.find("\xFF\xC2") + 5, 4, "\x9C\x40\x9C\x40"); // 40000 x 40000
    const struct {
        void (*read)(Image&, const std::string&);
        std::string bytes;
        std::string text;
        std::size_t more = 0; ///< Zero bytes that follow, on no disk.
    } cases[] = {
        {Ko::readJpegImage, corpus("jpeg/cmyk.jpg"), colors},
        {Ko::readJpegImage, corpus("jpeg/ycck.jpg"), colors},
        {Ko::readJpegImage, corpus("jpeg/two_components.jpg"), colors},
        {Ko::readJpegImage, corpus("jpeg/rgb.jpg"), jpeg + "(Unsupported color conversion request)"},
        {Ko::readPngImage, "", png},
        {Ko::readPngImage, corpus("png/lie_no_zlib.png"), png},
        {Ko::readPngImage, corpus("png/lie_no_palette.png"), png},
        {Ko::readPngImage, corpus("png/too_large.png"), "[readPngImage]: Image too large."},
        {Ko::readPngImage, corpus("png/too_large_palette.png"), "[readPngImage]: Image too large."},
        {Ko::readPngImage, texts, ""},
        {Ko::readJpegImage, corpus("jpeg/too_large.jpg"), "[readJpegImage]: Image too large."},
        {Ko::readJpegImage, corpus("jpeg/too_large_cmyk.jpg"), "[readJpegImage]: Image too large."},
        {Ko::readJpegImage, "", jpeg + "(Empty input file)"},
        {Ko::readJpegImage, "GIF", jpeg + "(Not a JPEG file: starts with 0x47 0x49)"},
        {Ko::readJpegImage, corpus("jpeg/lie_no_rows.jpg"), jpeg + "(Empty JPEG image (DNL not supported))"},
        {Ko::readJpegImage, withManyScans(3000, 3000), jpeg + "(More than 237 scans)"},
        {Ko::readJpegImage, withManyScans(5, 5), ""},
        {Ko::readJpegImage, progressive, jpeg + "("}, // libjpeg-turbo 2 and 3 say it differently
        {Ko::readPgmImage, "P6 1 1 255 xxx", header},
        {Ko::readPgmImage, "P5 65536 65536 255\n", "[readPgmImage]: Image too large."},
        {Ko::readPgmImage, "P5 ", "bad lexical cast: source type value could not be interpreted as target",
         std::size_t{3} << 30},
        {Ko::readPgmImage, "P5 " + std::string(1 << 25, '0') + "3 2 255\n", ""},
        {Ko::readPpmImage, "P5 1 1 255 x", header},
        {Ko::readPpmImage, "P6 1 1 256 x",
         "[ConvertIm::parseHeader]: Only a maximum color value of 255 is supported now."},
        {Ko::readPpmImage, "P6 1431655766 1 255\n", "[readPpmImage]: Image too large."},
        {Ko::readPpmImage, "P6 60000 60000 255\n", "[readPpmImage]: Image too large."},
        {Ko::readPpmImage, "P6 0 268435457 255\n", "[readPpmImage]: Image too large."},
        {Ko::readPpmImage, "P6 12000 12000 255\n", ""},
    };
    MemoryFile file;
    for (const auto& c : cases) {
        file.hold(c.bytes);
        ASSERT_EQ(truncate(file.path().c_str(), static_cast<off_t>(c.bytes.size() + c.more)), 0);
        const std::size_t before = resident();
        Image im(c.read == Ko::readPpmImage ? Ko::PF_RGB : Ko::PF_Y);
        std::string refusal;
        try {
            c.read(im, file.path());
        } catch (const std::exception& e) {
            refusal = e.what();
        }
        EXPECT_EQ(c.read == Ko::readJpegImage ? refusal.substr(0, c.text.size()) : refusal, c.text) << &c - cases;
        EXPECT_LT(resident(), before + 100000) << &c - cases;
    }
    testing::internal::GetCapturedStderr();
}

} // namespace
