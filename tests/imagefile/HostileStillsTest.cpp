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

// That nothing else happens is seen where the corpora are replayed; here are the reasons that are given.
TEST(HostileStills, SayWhatIsWrong) {
    const Quiet quiet;
    const std::string refused = "[readJpegImage]: libjpeg failed. ";
    const struct {
        Reader read;
        std::string bytes;
        std::string text;
    } cases[] = {
        {Ko::readPngImage, "", "[readPngImage]: png_error called."},
        {Ko::readPngImage, corpus("png/lie_no_zlib.png"), "[readPngImage]: png_error called."},
        {Ko::readPngImage, corpus("png/lie_no_palette.png"), "[readPngImage]: png_error called."},
        {Ko::readPngImage, corpus("png/too_large.png"), "[readPngImage]: Image too large."},
        {Ko::readPngImage, corpus("png/too_large_palette.png"), "[readPngImage]: Image too large."},
        {Ko::readJpegImage, corpus("jpeg/too_large.jpg"), "[readJpegImage]: Image too large."},
        {Ko::readJpegImage, corpus("jpeg/too_large_cmyk.jpg"), "[readJpegImage]: Image too large."},
        {Ko::readJpegImage, "", refused + "(Empty input file)"},
        {Ko::readJpegImage, "GIF", refused + "(Not a JPEG file: starts with 0x47 0x49)"},
        {Ko::readJpegImage, corpus("jpeg/lie_no_rows.jpg"), refused + "(Empty JPEG image (DNL not supported))"},
        {Ko::readJpegImage, withManyScans(3000, 3000), refused + "(More than 237 scans)"},
    };
    MemoryFile file;
    for (const auto& c : cases) {
        Image im = randomImage(Ko::PF_YCC444P, 3, 2);
        EXPECT_EQ(outcome(c.read, file, c.bytes, im), c.text) << "case " << &c - cases;
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
    std::string texts = corpus("png/texts.png");
    const std::size_t at = texts.find("zTXt") - 4;
    const std::string text = texts.substr(at, texts.find("IDAT") - 4 - at); // 7 MB unpacked
    for (int i = 0; i < 100; ++i)
        texts.insert(at, text);
    std::string progressive = corpus("jpeg/grey_progressive.jpg");
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
