#include "Kovanta/ImageFile.h"

#include "imagefile/StillMakers.h"
#include "imagefile/StillOracle.h"
#include "support/MemoryFile.h"
#include "support/Resources.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <cstdio>
// jpeglib.h needs stdio.h before it.
#include <jpeglib.h>
#include <png.h>

#include <malloc.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif

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

struct Still {
    const char* what;
    Reader read;
    std::string bytes;
};

const std::vector<Still> smallStills = {
    {"grey png", Ko::readPngImage, makePng({PNG_COLOR_TYPE_GRAY, 1, true, false, 9, 5})},
    {"palette png", Ko::readPngImage, makePng({PNG_COLOR_TYPE_PALETTE, 2, false, true, 5, 4})},
    {"rgb png", Ko::readPngImage, makePng({PNG_COLOR_TYPE_RGB, 8, false, true, 3, 3})},
    {"rgba png", Ko::readPngImage, makePng({PNG_COLOR_TYPE_RGB_ALPHA, 16, true, false, 3, 2})},
    {"grey jpeg", Ko::readJpegImage, makeJpeg({1, JCS_GRAYSCALE, JCS_GRAYSCALE, 1, 1, false, false, 9, 9})},
    {"jpeg", Ko::readJpegImage, makeJpeg({3, JCS_YCbCr, JCS_YCbCr, 2, 2, false, false, 9, 9})},
    {"progressive jpeg", Ko::readJpegImage, makeJpeg({3, JCS_YCbCr, JCS_YCbCr, 1, 1, true, false, 5, 5})},
    {"arithmetic jpeg", Ko::readJpegImage, makeJpeg({3, JCS_YCbCr, JCS_YCbCr, 1, 1, false, true, 9, 9})},
};

/// Reads a damaged file and holds the outcome against that of the bare library; tells whether it became a picture.
bool readsAsBareLibrary(const Still& still, MemoryFile& file, const std::string& bytes) {
    const bool png = still.read == Ko::readPngImage;
    const auto decoded = png ? decodePng(bytes) : decodeJpeg(bytes);
    Image im = randomImage(decoded ? decoded->format : Ko::PF_RGB, 2, 2);
    const std::string text = outcome(still.read, file, bytes, im);
    EXPECT_EQ(text.empty(), decoded.has_value()) << text;
    EXPECT_EQ(decoded && text.empty() ? difference(im, *decoded) : "", "");
    return text.empty();
}

/// Keeps the libraries' many complaints out of the test's output.
class Quiet {
public:
    Quiet() { testing::internal::CaptureStderr(); }
    ~Quiet() { testing::internal::GetCapturedStderr(); }
};

TEST(HostileStills, TruncatedAtEveryByte) {
    const Quiet quiet;
    MemoryFile file;
    for (const Still& still : smallStills) {
        int pictures = 0;
        for (std::size_t n = 0; n < still.bytes.size(); ++n) {
            SCOPED_TRACE(testing::Message() << still.what << " cut at " << n);
            pictures += readsAsBareLibrary(still, file, still.bytes.substr(0, n));
        }
        // libpng wants the whole file, libjpeg makes do with the header.
        EXPECT_EQ(pictures > 0, still.read == Ko::readJpegImage) << still.what;
    }
}

TEST(HostileStills, EveryBitFlipped) {
    const Quiet quiet;
    MemoryFile file;
    int outcomes[2] = {}; // refusals, pictures
    for (const Still& still : smallStills)
        for (std::size_t bit = 0; bit < 8 * still.bytes.size(); ++bit) {
            SCOPED_TRACE(testing::Message() << still.what << " bit " << bit);
            std::string bytes = still.bytes;
            bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ 1 << bit % 8);
            ++outcomes[readsAsBareLibrary(still, file, bytes)];
            if (still.read == Ko::readPngImage) // once more past the checksums
                ++outcomes[readsAsBareLibrary(still, file, withRightChecksums(bytes))];
        }
    EXPECT_GT(outcomes[0], 1000);
    EXPECT_GT(outcomes[1], 1000);
}

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
    std::string bytes = makeJpeg({1, JCS_GRAYSCALE, JCS_GRAYSCALE, 1, 1, true, false, 5, 5});
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
    const std::string onePixel = makePng({PNG_COLOR_TYPE_GRAY, 8, false, false, 1, 1});
    const std::size_t afterHeader = pngStart(1, 1, 8, 0).size();
    std::string texts = onePixel.substr(0, afterHeader) + pngChunk("iCCP", "no profile", 10) + pngChunk("prVt", "?", 1);
    const std::string text = pngLongText(7000000);
    for (int i = 0; i < 100; ++i)
        texts += text;
    texts += onePixel.substr(afterHeader);
    std::string progressive = makeJpeg({1, JCS_GRAYSCALE, JCS_GRAYSCALE, 1, 1, true, false, 5, 5});
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

/// Open descriptors, and bytes taken from malloc.
std::pair<std::size_t, std::size_t> held() {
    const struct mallinfo2 info = mallinfo2();
    // Sanitizers report leaks themselves.
    return {openDescriptors(), sanitized ? 0 : info.uordblks + info.hblkhd};
}

TEST(HostileStills, NothingIsLeftBehindByManyReads) {
    const Quiet quiet;
    std::vector<std::pair<Reader, std::string>> files = {
        {Ko::readJpegImage, makeJpeg({4, JCS_CMYK, JCS_CMYK, 1, 1})},
        {Ko::readJpegImage, makeJpeg({3, JCS_RGB, JCS_RGB, 1, 1})},
        {Ko::readPngImage, pngStart(60000, 60000, 8, 2)},
        {Ko::readPpmImage, "P6 4 2 255 short"},
        {Ko::readPpmImage, "P6 4 2 15 "},
    };
    for (const Still& still : smallStills) {
        std::string flipped = still.bytes;
        flipped[flipped.size() / 2] = static_cast<char>(flipped[flipped.size() / 2] ^ 0x55);
        for (const std::string& bytes : {still.bytes, still.bytes.substr(0, still.bytes.size() - 20), flipped})
            files.emplace_back(still.read, bytes);
    }
    MemoryFile file;
    const auto refusals = [&] {
        int refused = 0;
        for (const auto& [read, bytes] : files) {
            file.hold(bytes);
            for (const Ko::PIXEL_FORMAT format : {Ko::PF_BGR, Ko::PF_YCC444P}) { // no conversion reaches the first
                Image im(format);
                try {
                    read(im, file.path());
                } catch (const std::exception&) {
                    ++refused;
                }
            }
        }
        return refused;
    };
    const int refusedOnce = refusals(); // what is made once is made now
    EXPECT_GT(refusedOnce, static_cast<int>(files.size()));
    const int repeats = sanitized ? 15 : 150;
    int growths = 0;
    for (int i = 0; i < repeats; ++i) {
        const auto before = held();
        EXPECT_EQ(refusals(), refusedOnce);
        growths += held() > before;
    }
    // What malloc caches changes now and then; a leak shows every time.
    EXPECT_LT(growths, repeats / 2);
}

} // namespace
