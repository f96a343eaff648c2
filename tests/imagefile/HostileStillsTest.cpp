#include "Kovanta/ImageFile.h"

#include "imagefile/PngChunks.h"
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

/// The text of the exception that reading ends in, empty for a picture. An image that got none must be as it was.
std::string outcome(Reader read, MemoryFile& file, const std::string& bytes, Image& im) {
    file.hold(bytes);
    const Image before = im;
    try {
        read(im, file.path());
        return "";
    } catch (const std::exception& e) {
        EXPECT_EQ(difference(im, before), "");
        return e.what();
    }
}

/// Keeps the libraries' many complaints out of the test's output.
class Quiet {
public:
    Quiet() { testing::internal::CaptureStderr(); }
    ~Quiet() { testing::internal::GetCapturedStderr(); }
};

std::string jpegHeader(unsigned width, unsigned height, char components) {
    std::string bytes = "\xFF\xD8\xFF\xC0";
    bytes += '\0';
    bytes += static_cast<char>(8 + 3 * components);
    for (const unsigned n : {8u, height >> 8, height & 255, width >> 8, width & 255})
        bytes += static_cast<char>(n);
    bytes += components;
    for (char c = 1; c <= components; ++c)
        bytes += {c, '\x11', '\0'};
    return bytes + std::string("\xFF\xDA\0\x08\x01\x01\0\0\x3F\0", 10);
}

/// A progressive JPEG that goes over its picture again and again; the picture is as large as it says.
std::string withManyScans(unsigned width, unsigned height) {
    std::string bytes = fileBytes(STILLS "jpeg/grey_progressive.jpg");
    const std::size_t frame = bytes.find("\xFF\xC2");
    for (std::size_t i = 0; i < 4; ++i)
        bytes[frame + 5 + i] = static_cast<char>((height << 16 | width) >> (24 - 8 * i) & 255);
    const std::string scan = bytes.substr(bytes.rfind("\xFF\xDA"), bytes.size() - 2 - bytes.rfind("\xFF\xDA"));
    bytes.resize(bytes.size() - 2);
    for (int i = 0; i < 600; ++i)
        bytes += scan;
    return bytes + "\xFF\xD9";
}

TEST(HostileStills, HeadersThatLie) {
    const Quiet quiet;
    const std::string garbage = pngChunk("IDAT", "no zlib stream", 14);
    const std::string palette = pngChunk("PLTE", std::string(6, '\x11'), 6);
    const std::string refused = "[readJpegImage]: libjpeg failed. ";
    const struct {
        Reader read;
        std::string text;
        std::vector<std::string> files;
    } cases[] = {
        {Ko::readPngImage,
         "[readPngImage]: png_error called.",
         {"", pngStart(5000, 5000, 8, 0) + garbage, pngStart(2147483648u, 1, 8, 2) + garbage,
          pngStart(1, 2147483647u, 1, 0) + garbage, pngStart(4, 0, 8, 2) + garbage, pngStart(4, 4, 8, 5) + garbage,
          pngStart(4, 4, 8, 2) + pngChunk("IEND", "", 0), pngStart(4, 4, 8, 3) + garbage,
          pngStart(4, 4, 8, 2) + pngChunk("IDAT", "x", 0x7FFFFFFFu)}},
        {Ko::readPngImage,
         "[readPngImage]: Image too large.",
         {pngStart(60000, 60000, 8, 2) + garbage, pngStart(60000, 60000, 16, 6) + garbage,
          pngStart(60000, 60000, 4, 3) + palette + garbage, pngStart(66000, 66000, 1, 0) + garbage}},
        {Ko::readJpegImage,
         "[readJpegImage]: Image too large.",
         {jpegHeader(65500, 65500, 3), jpegHeader(65500, 32800, 4)}},
        {Ko::readJpegImage, refused + "(Empty input file)", {""}},
        {Ko::readJpegImage, refused + "(Not a JPEG file: starts with 0x47 0x49)", {"GIF"}},
        {Ko::readJpegImage, refused + "(Empty JPEG image (DNL not supported))", {jpegHeader(0, 5, 1)}},
        {Ko::readJpegImage, refused + "(More than 237 scans)", {withManyScans(3000, 3000)}},
    };
    MemoryFile file;
    for (const auto& c : cases)
        for (const std::string& bytes : c.files) {
            Image im = randomImage(Ko::PF_YCC444P, 3, 2);
            EXPECT_EQ(outcome(c.read, file, bytes, im), c.text) << "file " << &bytes - c.files.data();
        }
}

/// Kilobytes of memory that the process holds.
std::size_t resident() {
    std::size_t pages = 0;
    std::ifstream statm("/proc/self/statm");
    statm >> pages >> pages;
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / 1024;
}

// Each would take hundreds of megabytes at least.
TEST(HostileStills, CostWhatTheyAreWorth) {
    const Quiet quiet;
    const std::string small = fileBytes(STILLS "png/grey_8.png");
    const std::size_t afterHeader = pngStart(1, 1, 8, 0).size();
    std::string texts = small.substr(0, afterHeader) + pngChunk("iCCP", "no profile", 10) + pngChunk("prVt", "?", 1);
    const std::string text = pngLongText(7000000);
    for (int i = 0; i < 100; ++i)
        texts += text;
    texts += small.substr(afterHeader);
    std::string progressive = fileBytes(STILLS "jpeg/grey_progressive.jpg");
    progressive.replace(progressive.find("\xFF\xC2") + 5, 4, "\x9C\x40\x9C\x40"); // 40000 x 40000
    const struct {
        Reader read;
        std::string bytes;
        std::size_t more; ///< Zero bytes that follow, on no disk.
        std::string text;
        Ko::PIXEL_FORMAT format = Ko::PF_Y;
    } cases[] = {
        {Ko::readPngImage, texts, 0, ""},
        {Ko::readJpegImage, progressive, 0, "[readJpegImage]: libjpeg failed. (Backing store not supported)"},
        {Ko::readJpegImage, withManyScans(5, 5), 0, ""},
        {Ko::readPgmImage, "P5 ", std::size_t{3} << 30,
         "bad lexical cast: source type value could not be interpreted as target"},
        {Ko::readPgmImage, "P5 " + std::string(1 << 25, '0') + "3 2 255\n", 0, ""},
        {Ko::readPpmImage, "P6 12000 12000 255\n", 0, "", Ko::PF_RGB},
    };
    MemoryFile file;
    for (const auto& c : cases) {
        file.hold(c.bytes);
        ASSERT_EQ(truncate(file.path().c_str(), static_cast<off_t>(c.bytes.size() + c.more)), 0);
        const std::size_t before = resident();
        Image im(c.format);
        std::string refusal;
        try {
            c.read(im, file.path());
        } catch (const std::exception& e) {
            refusal = e.what();
        }
        EXPECT_EQ(refusal, c.text) << &c - cases;
        EXPECT_LT(resident(), before + 100000) << &c - cases;
    }
}

} // namespace
