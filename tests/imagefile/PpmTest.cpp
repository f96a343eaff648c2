// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ImageFile.h"

#include "support/ConversionOracle.h"
#include "support/TempDirectory.h"

#include <gtest/gtest.h>

#include <boost/lexical_cast/bad_lexical_cast.hpp>

#include <unistd.h>

#include <locale>
#include <sstream>
#include <stdexcept>

namespace {

using namespace test;

/// A locale in which 1.234 is a way to write 1234, and a comma ends a word.
class Grouping : public std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// As in a service that has closed its standard input.
TEST(Ppm, DescriptorZeroIsOneLikeAnyOther) {
    const TempDirectory directory;
    const Image im = randomImage(Ko::PF_RGB, 3, 2);
    Image back(Ko::PF_RGB);
    const int standardInput = dup(0);
    close(0);
    Ko::writePpmImage(directory.file("a.ppm"), im);
    Ko::readPpmImage(back, directory.file("a.ppm"));
    dup2(standardInput, 0);
    close(standardInput);
    EXPECT_EQ(difference(back, im), "");
}

TEST(Ppm, TheApplicationsLocaleDoesNotMatter) {
    const TempDirectory directory;
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    const Image wide = randomImage(Ko::PF_Y, 1234, 1);
    Ko::writePgmImage(directory.file("a.pgm"), wide);
    Image back(Ko::PF_Y);
    Ko::readPgmImage(back, directory.file("a.pgm"));
    std::istringstream grouped("P5 1.234 1 255 ");
    unsigned size = 0;
    const std::string refused = thrownText<boost::bad_lexical_cast>([&] { parseHeader(size, size, grouped, '5'); });
    std::locale::global(before);

    EXPECT_EQ(fileBytes(directory.file("a.pgm")).substr(0, 14), "P5 1234 1 255\n");
    EXPECT_EQ(difference(back, wide), "");
    EXPECT_EQ(refused, "bad lexical cast: source type value could not be interpreted as target");
    // The stream got its own locale back.
    EXPECT_EQ(std::use_facet<std::numpunct<char>>(grouped.getloc()).thousands_sep(), '.');
}

TEST(Ppm, WritesTheHeaderAndEveryRow) {
    const TempDirectory directory;
    const std::string path = directory.file("a.ppm");
    // Rows far apart, as in wrapped memory, make the same file as rows in one run.
    const Image whole = randomImage(Ko::PF_RGB, 5, 4);
    WrappedImage wrapped(Ko::PF_RGB, 5, 4);
    wrapped.im = whole;
    std::string expected = "P6 5 4 255\n";
    for (const auto& row : samples(whole, 0))
        expected.append(row.begin(), row.end());
    for (const Image* im : {&whole, &std::as_const(wrapped.im)}) {
        Ko::writePpmImage(path, *im);
        EXPECT_EQ(fileBytes(path), expected);
    }
    // A plane that is smaller than the description says is not read past its end.
    Image lying = randomImage(Ko::PF_RGB, 2, 2);
    lying.width = 3;
    lying.height = 4;
    Ko::writePpmImage(path, lying);
    EXPECT_EQ(fileBytes(path).size(), 11u + 36u);
    // Nor is one written past its end whose format was set behind the library's back.
    Image forged = randomImage(Ko::PF_YCC444P, 3, 4);
    forged.format = Ko::PF_RGB;
    EXPECT_NO_THROW(Ko::readPpmImage(forged, path));

    for (const auto& [w, h] : {std::pair{0u, 0u}, {3u, 0u}, {0u, 2u}}) {
        Image empty(Ko::PF_RGB);
        empty.size(w, h);
        Ko::writePpmImage(path, empty);
        EXPECT_EQ(fileBytes(path), "P6 " + std::to_string(w) + " " + std::to_string(h) + " 255\n");
        Image back = randomImage(Ko::PF_YCC444P, 2, 2);
        Ko::readPpmImage(back, path);
        EXPECT_EQ(std::pair(back.width, back.height), std::pair(w, h));
    }
}

TEST(Ppm, ReadsIntoTheFormatOfTheImage) {
    const TempDirectory directory;
    using Case = std::pair<std::string, std::vector<Ko::PIXEL_FORMAT>>; // the file's own format is the first
    for (const auto& [name, formats] :
         {Case{"a.ppm", {Ko::PF_RGB, Ko::PF_YCC444P}}, Case{"a.pgm", {Ko::PF_Y, Ko::PF_YCC444P, Ko::PF_YCC420P}}}) {
        const std::string path = directory.file(name);
        const Image original = randomImage(formats[0], 38, 22); // longer than what the stream buffers
        Ko::writeImage(path, original);
        for (const Ko::PIXEL_FORMAT format : formats) {
            Image im = randomImage(format, 3, 3);
            im.sequenceNumber = 5;
            Ko::readImage(im, path);
            EXPECT_EQ(difference(im, inFormat(format, original)), "") << name;
            // Of an identical format everything is copied, the number included.
            EXPECT_EQ(im.sequenceNumber, format == formats[0] ? 0u : 5u);
        }
        // An image over foreign memory keeps that memory.
        WrappedImage wrapped(formats[0], 38, 22);
        Ko::readImage(wrapped.im, path);
        EXPECT_FALSE(wrapped.im.plane[0].alloc);
        EXPECT_EQ(difference(wrapped.im, original), "");
        EXPECT_TRUE(wrapped.intact());
        for (const auto& [w, h] : {std::pair{37u, 21u}, {38u, 21u}, {39u, 23u}}) {
            WrappedImage other(formats[0], w, h);
            fill(other.im, 9);
            const Image before = other.im;
            EXPECT_THROW(Ko::readImage(other.im, path), std::logic_error);
            EXPECT_EQ(difference(other.im, before), "");
        }
    }
}

} // namespace
