#include "Kovanta/ImageFile.h"

#include "imagefile/StillMakers.h"
#include "imagefile/StillOracle.h"
#include "support/MemoryFile.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <cstdio>
// jpeglib.h needs stdio.h before it.
#include <jpeglib.h>
#include <png.h>

#include <malloc.h>

#include <filesystem>
#include <optional>
#include <stdexcept>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif

namespace {

using testing_support::Image;
using testing_support::makeJpeg;
using testing_support::makePng;
using testing_support::MemoryFile;
using testing_support::pngChunk;
using testing_support::pngStart;
using testing_support::randomImage;
using testing_support::samples;

using Reader = void (*)(Image&, const std::string&);
using Oracle = std::optional<Image> (*)(const std::string&);

std::optional<Image> decodePng(const std::string& bytes) {
    return testing_support::decodePng(bytes);
}

/// The text of the exception that reading ends in, empty for a picture. An image that got none must be as it was.
std::string outcome(Reader read, MemoryFile& file, const std::string& bytes, Image& im) {
    file.hold(bytes);
    const auto before = samples(im, 0);
    const unsigned width = im.width;
    try {
        read(im, file.path());
        return "";
    } catch (const std::exception& e) {
        EXPECT_EQ(im.width, width);
        EXPECT_EQ(samples(im, 0), before);
        return e.what();
    }
}

struct Still {
    const char* what;
    Reader read;
    Oracle oracle;
    std::string bytes;
};

std::vector<Still> smallStills() {
    return {
        {"grey png", Ko::readPngImage, decodePng, makePng({PNG_COLOR_TYPE_GRAY, 1, true, false, 9, 5})},
        {"palette png", Ko::readPngImage, decodePng, makePng({PNG_COLOR_TYPE_PALETTE, 2, false, true, 5, 4})},
        {"rgb png", Ko::readPngImage, decodePng, makePng({PNG_COLOR_TYPE_RGB, 8, false, true, 3, 3})},
        {"rgba png", Ko::readPngImage, decodePng, makePng({PNG_COLOR_TYPE_RGB_ALPHA, 16, true, false, 3, 2})},
        {"grey jpeg", Ko::readJpegImage, testing_support::decodeJpeg,
         makeJpeg({1, JCS_GRAYSCALE, JCS_GRAYSCALE, 1, 1, false, false, 9, 9})},
        {"jpeg", Ko::readJpegImage, testing_support::decodeJpeg,
         makeJpeg({3, JCS_YCbCr, JCS_YCbCr, 2, 2, false, false, 9, 9})},
        {"progressive jpeg", Ko::readJpegImage, testing_support::decodeJpeg,
         makeJpeg({3, JCS_YCbCr, JCS_YCbCr, 1, 1, true, false, 5, 5})},
        {"arithmetic jpeg", Ko::readJpegImage, testing_support::decodeJpeg,
         makeJpeg({3, JCS_YCbCr, JCS_YCbCr, 1, 1, false, true, 9, 9})},
    };
}

/// Reads a damaged file and holds the outcome against that of the bare library.
void compareWithOracle(const Still& still, MemoryFile& file, const std::string& bytes, int& pictures) {
    const auto decoded = still.oracle(bytes);
    Image im = randomImage(decoded ? decoded->format : Ko::PF_RGB, 2, 2);
    const std::string text = outcome(still.read, file, bytes, im);
    EXPECT_EQ(text.empty(), decoded.has_value()) << text;
    if (decoded && text.empty()) {
        EXPECT_EQ(im.width, decoded->width);
        EXPECT_EQ(samples(im, 0), samples(*decoded, 0));
        ++pictures;
    }
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
    for (const Still& still : smallStills()) {
        int pictures = 0;
        for (std::size_t n = 0; n < still.bytes.size(); ++n) {
            SCOPED_TRACE(testing::Message() << still.what << " cut at " << n);
            compareWithOracle(still, file, still.bytes.substr(0, n), pictures);
        }
        // libpng wants the whole file, libjpeg makes do with the header.
        EXPECT_EQ(pictures > 0, still.read == Ko::readJpegImage) << still.what;
    }
}

TEST(HostileStills, EveryBitFlipped) {
    const Quiet quiet;
    MemoryFile file;
    int flips = 0;
    int pictures = 0;
    for (const Still& still : smallStills()) {
        for (std::size_t bit = 0; bit < 8 * still.bytes.size(); ++bit) {
            SCOPED_TRACE(testing::Message() << still.what << " bit " << bit);
            std::string bytes = still.bytes;
            bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ 1 << bit % 8);
            compareWithOracle(still, file, bytes, pictures);
            ++flips;
            if (still.read == Ko::readPngImage) { // once more past the checksums
                compareWithOracle(still, file, testing_support::withRightChecksums(bytes), pictures);
                ++flips;
            }
        }
    }
    EXPECT_GT(pictures, 1000);
    EXPECT_GT(flips - pictures, 1000);
}

TEST(HostileStills, PixmapsCutAndFlipped) {
    const std::string header = "P6\n#c\n4 2\n255\n";
    const std::string whole = header + std::string(24, 'x');
    MemoryFile file;
    for (std::size_t n = 0; n <= whole.size(); ++n) {
        if (n == 4 || n == 5)
            continue; // a comment that the file never ends is read for ever
        Image im = randomImage(Ko::PF_RGB, 3, 3);
        const std::string text = outcome(Ko::readPpmImage, file, whole.substr(0, n), im);
        EXPECT_EQ(text.empty(), n >= header.size() - 1) << n << text;
        EXPECT_EQ(im.width, text.empty() ? 4u : 3u);
    }
    for (std::size_t bit = 0; bit < 8 * header.size(); ++bit) {
        std::string bytes = whole;
        bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ 1 << bit % 8);
        Image im = randomImage(Ko::PF_RGB, 3, 3);
        const std::string text = outcome(Ko::readPpmImage, file, bytes, im);
        EXPECT_EQ(im.width == 3, !text.empty()) << bit;
    }
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
    const std::string pngError = "[readPngImage]: png_error called.";
    const std::string end = pngChunk("IEND", "", 0);
    const std::string garbage = pngChunk("IDAT", "no zlib stream", 14);
    const std::string good = makePng({PNG_COLOR_TYPE_RGB, 8, false, false, 3, 3});
    const std::string palette = pngChunk("PLTE", std::string(6, '\x11'), 6);
    const struct {
        Reader read;
        std::string bytes;
        std::string text;
    } cases[] = {
        {Ko::readPngImage, "", pngError},
        {Ko::readPngImage, "P6 1 1 255 xxx, which is no PNG", pngError},
        {Ko::readPngImage, pngStart(60000, 60000, 8, 2) + garbage + end, "[readPngImage]: Image too large."},
        {Ko::readPngImage, pngStart(60000, 60000, 16, 6) + garbage, "[readPngImage]: Image too large."},
        {Ko::readPngImage, pngStart(60000, 60000, 4, 3) + palette + garbage, "[readPngImage]: Image too large."},
        {Ko::readPngImage, pngStart(66000, 66000, 1, 0) + garbage, "[readPngImage]: Image too large."},
        {Ko::readPngImage, pngStart(5000, 5000, 8, 0) + garbage + end, pngError},
        {Ko::readPngImage, pngStart(2147483648u, 1, 8, 2) + end, pngError},
        {Ko::readPngImage, pngStart(1, 2147483647u, 1, 0) + end, pngError},
        {Ko::readPngImage, pngStart(4, 0, 8, 2) + end, pngError},
        {Ko::readPngImage, pngStart(4, 4, 3, 2) + end, pngError},
        {Ko::readPngImage, pngStart(4, 4, 8, 5) + end, pngError},
        {Ko::readPngImage, pngStart(4, 4, 8, 2) + end, pngError},                                // no pixels
        {Ko::readPngImage, pngStart(4, 4, 8, 3) + garbage, pngError},                            // no palette
        {Ko::readPngImage, pngStart(4, 4, 8, 2) + pngChunk("IDAT", "x", 0xFFFFFFFFu), pngError}, // lengths
        {Ko::readPngImage, pngStart(4, 4, 8, 2) + pngChunk("IDAT", "x", 0x7FFFFFFFu), pngError},
        {Ko::readPngImage, pngStart(4, 4, 8, 2) + pngChunk("tEXt", "x", 1000000), pngError},
        {Ko::readPngImage, good.substr(0, good.size() - 12) + pngChunk("tEXt", "k", 5), pngError},
        {Ko::readPngImage, good.substr(0, good.size() - 12), pngError}, // no end
        {Ko::readJpegImage, "", "[readJpegImage]: libjpeg failed. (Empty input file)"},
        {Ko::readJpegImage, "GIF", "[readJpegImage]: libjpeg failed. (Not a JPEG file: starts with 0x47 0x49)"},
        {Ko::readJpegImage, jpegHeader(65500, 65500, 3), "[readJpegImage]: Image too large."},
        {Ko::readJpegImage, jpegHeader(65500, 32800, 4), "[readJpegImage]: Image too large."},
        {Ko::readJpegImage, jpegHeader(0, 5, 1),
         "[readJpegImage]: libjpeg failed. (Empty JPEG image (DNL not supported))"},
        {Ko::readJpegImage, jpegHeader(65535, 5, 1),
         "[readJpegImage]: libjpeg failed. (Maximum supported image dimension is 65500 pixels)"},
        {Ko::readJpegImage, withManyScans(5, 5), "[readJpegImage]: libjpeg failed. (More than 500 scans)"},
        {Ko::readJpegImage, withManyScans(3000, 3000), "[readJpegImage]: libjpeg failed. (More than 238 scans)"},
    };
    MemoryFile file;
    for (const auto& c : cases) {
        Image im = randomImage(Ko::PF_YCC444P, 3, 2);
        EXPECT_EQ(outcome(c.read, file, c.bytes, im), c.text) << "case " << &c - cases;
    }
}

std::size_t openDescriptors() {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        ++count;
    return count;
}

TEST(HostileStills, NothingIsLeftBehindByManyReads) {
    const Quiet quiet;
    std::vector<std::pair<Reader, std::string>> files;
    for (const Still& still : smallStills()) {
        files.emplace_back(still.read, still.bytes);
        files.emplace_back(still.read, still.bytes.substr(0, still.bytes.size() - 20));
        std::string flipped = still.bytes;
        flipped[flipped.size() / 2] = static_cast<char>(flipped[flipped.size() / 2] ^ 0x55);
        files.emplace_back(still.read, flipped);
    }
    files.emplace_back(Ko::readJpegImage, makeJpeg({4, JCS_CMYK, JCS_CMYK, 1, 1}));
    files.emplace_back(Ko::readJpegImage, makeJpeg({3, JCS_RGB, JCS_RGB, 1, 1}));
    files.emplace_back(Ko::readPngImage, pngStart(60000, 60000, 8, 2));
    files.emplace_back(Ko::readPpmImage, "P6 4 2 255 short");
    files.emplace_back(Ko::readPpmImage, "P6 4 2 15 ");

    std::vector<MemoryFile> held(files.size());
    for (std::size_t i = 0; i < files.size(); ++i)
        held[i].hold(files[i].second);
    const auto readAll = [&](int reads) {
        int refused = 0;
        for (int i = 0; i < reads; ++i) {
            const std::size_t which = static_cast<std::size_t>(i) % files.size();
            // Every third image is of a format that no conversion reaches.
            Image im(i % 3 == 0 ? Ko::PF_BGR : Ko::PF_YCC444P);
            try {
                files[which].first(im, held[which].path());
            } catch (const std::exception&) {
                ++refused;
            }
        }
        return refused;
    };
    const int rounds = static_cast<int>(3 * files.size());
    const int refusedInRounds = readAll(rounds); // what is made once is made now
    const std::size_t descriptors = openDescriptors();
    const auto memory = [] {
        const struct mallinfo2 info = mallinfo2();
        return info.uordblks + info.hblkhd;
    };
    const std::size_t before = memory();
    // Sanitizers report leaks themselves, and would take long.
    const int repeats = (sanitized ? 1000 : 10000) / rounds + 1;
    const int refused = readAll(repeats * rounds);
    const std::size_t after = memory();
    EXPECT_EQ(refused, repeats * refusedInRounds);
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_EQ(sanitized ? 0 : after - before, 0u);
}

} // namespace
