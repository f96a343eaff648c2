#include "Kovanta/ImageFile.h"

#include "support/ConversionOracle.h"
#include "support/TempDirectory.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <boost/lexical_cast/bad_lexical_cast.hpp>

#include <locale>
#include <sstream>
#include <stdexcept>

namespace {

using testing_support::fileBytes;
using testing_support::Image;
using testing_support::randomImage;
using testing_support::samples;
using testing_support::TempDirectory;
using testing_support::thrownText;

const std::string badMagic = "[ConvertIm::parseHeader]: Incorrect PPM/PGM header.";
const std::string badMaximum = "[ConvertIm::parseHeader]: Only a maximum color value of 255 is supported now.";
const std::string badNumber = "bad lexical cast: source type value could not be interpreted as target";
const std::string noConversion =
    "[convertIm]: Don't know how to convert from PF_Y (Grayscale) to PF_RGB (Packed RGB 4:4:4).";

TEST(ParseHeader, TakesExactlyTheGrammar) {
    const struct {
        const char* header;
        unsigned width;
        unsigned height;
        const char* rest; // what is left in the stream
    } cases[] = {
        {"P6 640 480 255\nxyz", 640, 480, "xyz"},
        {"P6640 480 255\nx", 640, 480, "x"},
        {"P6\n# made by hand\n4 2\n255\nxyz", 4, 2, "xyz"},
        {"P6 #\n4 #x\n #y z # \n# 9 9\n2 # 255\n255 x", 4, 2, "x"},
        {"P6\t1\v2\f255\r\nx", 1, 2, "\nx"},
        {"P6 0 0 255\n", 0, 0, ""},
        {"P6 4 2 255", 4, 2, ""},
        {"P6 007 +4 0255 x", 7, 4, "x"},
        {"P6 -1 4294967295 255 x", 4294967295u, 4294967295u, "x"},
        {"P6 4 2 255\n\n", 4, 2, "\n"},
    };
    for (const auto& c : cases) {
        std::istringstream stream(c.header);
        unsigned width = 0;
        unsigned height = 0;
        parseHeader(width, height, stream, '6');
        EXPECT_EQ(width, c.width) << c.header;
        EXPECT_EQ(height, c.height) << c.header;
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), c.rest) << c.header;
    }
}

TEST(ParseHeader, RefusesEverythingElseAndSetsNothing) {
    const auto refusal = [](const std::string& header, char type) {
        std::istringstream stream(header);
        unsigned width = 77;
        unsigned height = 77;
        std::string text = "nothing thrown";
        try {
            parseHeader(width, height, stream, type);
        } catch (const boost::bad_lexical_cast& e) {
            text = e.what();
        } catch (const std::runtime_error& e) {
            text = e.what();
        }
        EXPECT_EQ(width + height, 154u);
        return text;
    };
    for (const char* header :
         {"", "P", "P3 1 1 255 ", "P2 1 1 255 ", "P5 1 1 255 ", " P6 1 1 255 ", "p6 1 1 255 ", "6P"})
        EXPECT_EQ(refusal(header, '6'), badMagic) << header;
    EXPECT_EQ(refusal("P6 1 1 255 ", '5'), badMagic);
    for (const char* header : {"P6 1 1 65535 ", "P6 1 1 15 ", "P6 1 1 256 ", "P6 1 1 0 ", "P6 1 1 -1 "})
        EXPECT_EQ(refusal(header, '6'), badMaximum) << header;
    for (const char* header : {"P6", "P6 1", "P6 1 1", "P6 1 1 ", "P6 x 1 255 ", "P6 1 1# 255 ", "P6 1 1 255# ",
                               "P6 1.0 1 255 ", "P6 0x1 1 255 ", "P6 4294967296 1 255 ",
                               "P6 1 99999999999999999999 255 ", "P6 - 1 255 ", "P6 +-1 1 255 ", "P6 1e1 1 255 "})
        EXPECT_EQ(refusal(header, '6'), badNumber) << header;
}

/// A locale in which 1.234 is a way to write 1234, and a comma ends a word.
class Grouping : public std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(Ppm, TheApplicationsLocaleDoesNotMatter) {
    const TempDirectory directory;
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    Image wide = randomImage(Ko::PF_Y, 1234, 1);
    Ko::writePgmImage(directory.file("a.pgm"), wide);
    Image back(Ko::PF_Y);
    Ko::readPgmImage(back, directory.file("a.pgm"));
    std::istringstream grouped("P5 1.234 1 255 ");
    unsigned width = 0;
    unsigned height = 0;
    const std::string refusal = thrownText<boost::bad_lexical_cast>([&] { parseHeader(width, height, grouped, '5'); });
    const std::locale kept = grouped.getloc();
    std::locale::global(before);

    EXPECT_EQ(fileBytes(directory.file("a.pgm")).substr(0, 14), "P5 1234 1 255\n");
    EXPECT_EQ(samples(back, 0), samples(wide, 0));
    EXPECT_EQ(refusal, badNumber);
    EXPECT_TRUE(std::has_facet<std::numpunct<char>>(kept));
    EXPECT_EQ(std::use_facet<std::numpunct<char>>(kept).thousands_sep(), '.'); // the stream got its own locale back
}

TEST(Ppm, WritesTheHeaderAndEveryRow) {
    const TempDirectory directory;
    Image grey = randomImage(Ko::PF_Y, 3, 1);
    for (unsigned x = 0; x < 3; ++x)
        grey.plane[0].view[0][x] = static_cast<unsigned char>('a' + x);
    Ko::writePgmImage(directory.file("a.pgm"), grey);
    EXPECT_EQ(fileBytes(directory.file("a.pgm")), "P5 3 1 255\nabc");

    EXPECT_EQ(thrownText<std::logic_error>([&] { Ko::writePpmImage(directory.file("a.ppm"), grey); }), noConversion);
    EXPECT_EQ(fileBytes(directory.file("a.ppm")), "P6 3 1 255\n");

    // Rows far apart, as in wrapped memory, make the same file as rows in one run.
    const Image whole = randomImage(Ko::PF_RGB, 5, 4);
    testing_support::GuardedRows memory(15, 4);
    Image wrapped(Ko::PF_RGB);
    wrapped.size(5, 4, false);
    memory.pointRows(wrapped.plane[0]);
    wrapped = whole;
    Ko::writePpmImage(directory.file("whole.ppm"), whole);
    Ko::writePpmImage(directory.file("wrapped.ppm"), wrapped);
    std::string expected = "P6 5 4 255\n";
    for (const auto& row : samples(whole, 0))
        expected.append(row.begin(), row.end());
    EXPECT_EQ(fileBytes(directory.file("whole.ppm")), expected);
    EXPECT_EQ(fileBytes(directory.file("wrapped.ppm")), expected);

    // A plane that is smaller than the description says is not read past its end.
    Image lying = randomImage(Ko::PF_RGB, 2, 2);
    lying.width = 3;
    lying.height = 4;
    Ko::writePpmImage(directory.file("lying.ppm"), lying);
    EXPECT_EQ(fileBytes(directory.file("lying.ppm")).size(), 11u + 36u);

    // Nor is one written past its end whose format was set behind the library's back.
    Image forged = randomImage(Ko::PF_YCC444P, 3, 4);
    forged.format = Ko::PF_RGB;
    EXPECT_NO_THROW(Ko::readPpmImage(forged, directory.file("lying.ppm")));

    for (const auto& [w, h] : {std::pair{0u, 0u}, {3u, 0u}, {0u, 2u}}) {
        Image empty(Ko::PF_RGB);
        empty.size(w, h);
        Ko::writePpmImage(directory.file("empty.ppm"), empty);
        EXPECT_EQ(fileBytes(directory.file("empty.ppm")),
                  "P6 " + std::to_string(w) + " " + std::to_string(h) + " 255\n");
        Image back = randomImage(Ko::PF_YCC444P, 2, 2);
        Ko::readPpmImage(back, directory.file("empty.ppm"));
        EXPECT_EQ(back.width, w);
        EXPECT_EQ(back.height, h);
    }
    EXPECT_NO_THROW(Ko::writePpmImage("/dev/full", whole)); // write errors go unseen
}

TEST(Ppm, ReadsIntoTheFormatOfTheImage) {
    const TempDirectory directory;
    const struct {
        const char* name;
        Ko::PIXEL_FORMAT stored;
        std::vector<Ko::PIXEL_FORMAT> targets;
    } cases[] = {
        {"a.ppm", Ko::PF_RGB, {Ko::PF_RGB, Ko::PF_YCC444P}},
        {"a.pgm", Ko::PF_Y, {Ko::PF_Y, Ko::PF_YCC444P, Ko::PF_YCC420P}},
    };
    for (const auto& c : cases) {
        const Image original = randomImage(c.stored, 38, 22); // longer than what the stream buffers
        Ko::writeImage(directory.file(c.name), original);
        for (const Ko::PIXEL_FORMAT format : c.targets) {
            Image expected(format);
            expected.size(original.width, original.height);
            ASSERT_TRUE(testing_support::expectedConversion(expected, original));
            Image im = randomImage(format, 7, 5);
            im.sequenceNumber = 5;
            Ko::readImage(im, directory.file(c.name));
            EXPECT_EQ(im.format, format);
            EXPECT_EQ(im.sequenceNumber, format == c.stored ? 0u : 5u); // an identical format copies all of it
            for (int p = 0; p < (format == Ko::PF_YCC444P || format == Ko::PF_YCC420P ? 3 : 1); ++p)
                EXPECT_EQ(samples(im, p), samples(expected, p)) << c.name << fmt2string(format) << p;
        }
        // A refused pair leaves the size behind; an image over foreign memory keeps that memory.
        Image refused = randomImage(Ko::PF_BGR, 2, 2);
        EXPECT_EQ(thrownText<std::logic_error>([&] { Ko::readImage(refused, directory.file(c.name)); }),
                  "[convertIm]: Don't know how to convert from " + fmt2string(c.stored) + " to PF_BGR (Packed BGR).");
        EXPECT_EQ(refused.width, 38u);
        EXPECT_EQ(refused.plane[0].width, 114u);

        testing_support::GuardedRows memory(original.plane[0].width, 22);
        Image wrapped(c.stored);
        wrapped.size(38, 22, false);
        for (auto& plane : wrapped.plane)
            plane.newData(plane.width, plane.height, &plane != wrapped.plane);
        wrapped.plane[0].view = wrapped.plane[0].rows;
        memory.pointRows(wrapped.plane[0]);
        Ko::readImage(wrapped, directory.file(c.name));
        EXPECT_FALSE(wrapped.plane[0].alloc);
        EXPECT_EQ(samples(wrapped, 0), samples(original, 0));
        EXPECT_TRUE(memory.intact());
    }
}

TEST(Ppm, AShortFileIsReadAsFarAsItGoes) {
    const TempDirectory directory;
    for (const Ko::PIXEL_FORMAT format : {Ko::PF_RGB, Ko::PF_YCC444P}) {
        Image im = randomImage(format, 4, 2);
        Ko::readPpmImage(im, directory.write("short.ppm", "P6\n#\n4 2\n255\n" + std::string(14, '\x40')));
        Image expected(Ko::PF_RGB);
        expected.size(4, 2);
        testing_support::fill(expected, 0);
        for (std::size_t i = 0; i < 14; ++i)
            expected.plane[0].data[i] = 0x40;
        Image converted(format);
        converted.size(4, 2);
        ASSERT_TRUE(testing_support::expectedConversion(converted, expected));
        EXPECT_EQ(samples(im, 0), samples(converted, 0));
    }
}

TEST(Ppm, RefusedFilesLeaveTheImageAlone) {
    const TempDirectory directory;
    const struct {
        const char* name;
        std::string bytes;
        std::string text;
    } cases[] = {
        {"a.ppm", "P5 1 1 255 x", badMagic},
        {"a.pgm", "P6 1 1 255 xxx", badMagic},
        {"a.ppm", "P6 1 1 65535 xxx", badMaximum},
        {"a.ppm", "P6 4 two 255 ", badNumber},
        {"a.ppm", "P6 2147483648 1 255\n", "[readPpmImage]: Image too large."},
        {"a.ppm", "P6 -1 1 255\n", "[readPpmImage]: Image too large."},
        {"a.ppm", "P6 1431655766 1 255\n", "[readPpmImage]: Image too large."},
        {"a.ppm", "P6 60000 60000 255\n", "[readPpmImage]: Image too large."},
        {"a.ppm", "P6 1 268435457 255\n", "[readPpmImage]: Image too large."},
        {"a.ppm", "P6 0 268435457 255\n", "[readPpmImage]: Image too large."},
        {"a.pgm", "P5 65536 65536 255\n", "[readPgmImage]: Image too large."},
        {"a.pgm", "P5 4294967295 2 255\n", "[readPgmImage]: Image too large."},
        {"a.pgm", "P5 1 2147483648 255\n", "[readPgmImage]: Image too large."},
    };
    for (const auto& c : cases) {
        Image im = randomImage(Ko::PF_YCC444P, 3, 2);
        const auto before = samples(im, 1);
        const std::string path = directory.write(c.name, c.bytes);
        std::string text = "nothing thrown";
        try {
            Ko::readImage(im, path);
        } catch (const std::exception& e) {
            text = e.what();
        }
        EXPECT_EQ(text, c.text) << c.bytes;
        EXPECT_EQ(im.width, 3u);
        EXPECT_EQ(samples(im, 1), before);
    }
}

} // namespace
