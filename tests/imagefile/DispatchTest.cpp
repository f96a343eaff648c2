// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ImageFile.h"

#include "support/Rows.h"
#include "support/TempDirectory.h"
#include "support/TestImages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <stdexcept>
#include <thread>
#include <typeinfo>
#include <vector>

namespace {

using namespace test;
using testing::ThrowsMessage;

TEST(Dispatch, TheLastExtensionChoosesTheFormatInAnyCase) {
    const TempDirectory directory;
    const Image im = randomImage(Ko::PF_YCC444P, 6, 4);
    using Case = std::pair<const char*, std::string>;
    for (const auto& [name, magic] :
         {Case{"a.ppm", "P6"}, Case{"a.PPM", "P6"}, Case{"a.pgm", "P5"}, Case{"a.pGm", "P5"},
          Case{"a.b.png", "\x89PNG"}, Case{".png", "\x89PNG"}, Case{"photo.JPG", "\xFF\xD8"},
          Case{"photo.Jpeg", "\xFF\xD8"}, Case{"photo.jpeg", "\xFF\xD8"}}) {
        const std::string path = directory.file(name);
        Ko::writeImage(path, im);
        EXPECT_EQ(fileBytes(path).substr(0, magic.size()), magic) << name;
        Image back(Ko::PF_YCC444P);
        Ko::readImage(back, path);
        EXPECT_EQ(std::pair(back.width, back.height), std::pair(6u, 4u)) << name;
    }
}

TEST(Dispatch, ACommentWithoutAnEndEndsWithTheMemory) {
    Image im(Ko::PF_RGB);
    EXPECT_THROW(Ko::readImage(im, "P6 3 #x", 7), std::bad_cast);
}

TEST(Dispatch, NamesWithoutAKnownExtensionAreRefused) {
    Image im = randomImage(Ko::PF_RGB, 2, 2);
    for (const std::string name : {"pic.bmp", "x.tiff", "x.jpg.bak", "ends.", "d.x/picture", ".", "a.png "}) {
        EXPECT_THAT(
            [&] { Ko::readImage(im, name); },
            ThrowsMessage<std::logic_error>("[readImage]: Cannot read " + name + ": extension not recognized."));
        const auto unknown =
            ThrowsMessage<std::logic_error>("[writeImage]: Cannot write " + name + ": extension not recognized.");
        EXPECT_THAT([&] { Ko::writeImage(name, im); }, unknown);
        std::vector<unsigned char> bytes;
        EXPECT_THAT([&] { Ko::writeImage(bytes, im, name); }, unknown);
    }
    for (const std::string name : {"", "picture", "dir/picture"}) {
        const auto noDot = ThrowsMessage<std::out_of_range>(testing::StartsWith("basic_string::substr"));
        EXPECT_THAT([&] { Ko::readImage(im, name); }, noDot);
        EXPECT_THAT([&] { Ko::writeImage(name, im); }, noDot);
    }
}

struct Format : test::Row {
    const char* extension;
    void (*read)(Image&, const std::string&);
    void (*write)(const std::string&, const Image&);
    Ko::PIXEL_FORMAT exchanged; ///< What is written without a conversion.
    Ko::PIXEL_FORMAT refused;   ///< What cannot be written.
    const char* leftByRefusal;  ///< In a file that held "something older", for an image of 3 x 1.
    const char* empty;          ///< What writing an image without pixels says, or the file that it makes.
};

class StillFormats : public testing::TestWithParam<Format> {
protected:
    std::string reading(const std::string& text) const {
        return "[read" + std::string(GetParam().row) + "Image]: " + text;
    }
    std::string writing(const std::string& text) const {
        return "[write" + std::string(GetParam().row) + "Image]: " + text;
    }

    const TempDirectory directory;
};

INSTANTIATE_TEST_SUITE_P(
    All, StillFormats,
    testing::Values(
        Format{
            {"Ppm"}, ".ppm", Ko::readPpmImage, Ko::writePpmImage, Ko::PF_RGB, Ko::PF_Y, "P6 3 1 255\n", "P6 0 0 255\n"},
        Format{
            {"Pgm"}, ".PGM", Ko::readPgmImage, Ko::writePgmImage, Ko::PF_Y, Ko::PF_RGB, "P5 3 1 255\n", "P5 0 0 255\n"},
        Format{{"Png"},
               ".png",
               Ko::readPngImage,
               Ko::writePngImage,
               Ko::PF_RGB,
               Ko::PF_Y,
               "something older",
               "writePngImage: png_error called."},
        Format{{"Jpeg"},
               ".jpg",
               Ko::readJpegImage,
               Ko::writeJpegImage,
               Ko::PF_JFIF,
               Ko::PF_Y,
               "something older",
               "[writeJpegImage]: libjpeg failed. (Empty JPEG image (DNL not supported))"}),
    test::rowName);

TEST_P(StillFormats, WhatCannotBeOpenedIsNamedWithTheSystemsReason) {
    const std::string older = directory.write("a.png", "something older");
    const std::pair<std::string, std::string> names[] = {{directory.file("absent/a"), ": No such file or directory."},
                                                         {directory.path(), ": Is a directory."},
                                                         {"", ": No such file or directory."},
                                                         {std::string(300, 'n'), ": File name too long."},
                                                         // The system would see a.png.
                                                         {older + '\0' + ".ppm", ": Invalid argument."}};
    for (const auto& named : names) {
        const std::string& name = named.first;
        const std::string shown = name.substr(0, name.find('\0')) + (name.find('\0') < name.size() ? "\\0.ppm" : "");
        const std::string text = "Cannot open " + shown + named.second;
        const Image before = randomImage(Ko::PF_YCC444P, 3, 2);
        Image im = before;
        EXPECT_THAT([&] { GetParam().read(im, name); }, ThrowsMessage<std::runtime_error>(reading(text)));
        EXPECT_THAT([&] { GetParam().write(name, im); }, ThrowsMessage<std::runtime_error>(writing(text)));
        EXPECT_EQ(difference(im, before), "");
    }
    EXPECT_EQ(fileBytes(older), "something older");
}

TEST_P(StillFormats, AFullDiskIsReported) {
    // The first is told by the last step only, when the stream's buffer goes out.
    for (const unsigned size : {4u, 200u})
        EXPECT_THAT([&] { GetParam().write("/dev/full", randomImage(GetParam().exchanged, size, size)); },
                    ThrowsMessage<std::runtime_error>(writing("Cannot write /dev/full: No space left on device.")));
}

TEST_P(StillFormats, ARefusedImageCostsNoGoodFile) {
    const std::string path = directory.write("a", "something older");
    EXPECT_THAT([&] { GetParam().write(path, randomImage(GetParam().refused, 3, 1)); },
                ThrowsMessage<std::logic_error>("[convertIm]: Don't know how to convert from " +
                                                fmt2string(GetParam().refused) + " to " +
                                                fmt2string(GetParam().exchanged) + "."));
    EXPECT_EQ(fileBytes(path), GetParam().leftByRefusal);
    // Nothing is left of an image without pixels, unless the format has such files.
    const Image empty(GetParam().exchanged);
    const bool refused = GetParam().empty[0] != 'P';
    EXPECT_EQ(thrownText<std::runtime_error>([&] { GetParam().write(path, empty); }),
              refused ? GetParam().empty : "nothing thrown");
    EXPECT_EQ(fileBytes(path), refused ? GetParam().leftByRefusal : GetParam().empty);
    // What is shorter leaves nothing of the longer behind.
    directory.write("a", std::string(100000, 'x'));
    GetParam().write(path, randomImage(GetParam().exchanged, 3, 3));
    const std::string longerBefore = fileBytes(path);
    GetParam().write(directory.file("fresh"), randomImage(GetParam().exchanged, 3, 3));
    EXPECT_EQ(longerBefore, fileBytes(directory.file("fresh")));
}

TEST_P(StillFormats, ARefusedConversionComesAfterTheResize) {
    GetParam().write(directory.file("a"), randomImage(GetParam().exchanged, 6, 4));
    Image im = randomImage(Ko::PF_BGR, 3, 2);
    WrappedImage wrapped(Ko::PF_BGR, 9, 9);
    EXPECT_THAT([&] { GetParam().read(im, directory.file("a")); },
                ThrowsMessage<std::logic_error>("[convertIm]: Don't know how to convert from " +
                                                fmt2string(GetParam().exchanged) + " to PF_BGR (Packed BGR)."));
    EXPECT_EQ(std::pair(im.plane[0].width, im.plane[0].height), std::pair(18u, 4u));
    EXPECT_THROW(GetParam().read(wrapped.im, directory.file("a")), std::logic_error);
    EXPECT_EQ(wrapped.im.plane[0].alloc, GetParam().empty[0] != 'P'); // only pixmaps keep to foreign memory
    EXPECT_TRUE(wrapped.intact());
}

TEST_P(StillFormats, AViewIsWrittenFromWhereItBegins) {
    const unsigned bytes = GetParam().exchanged == Ko::PF_Y ? 1 : 3;
    Image seen = randomImage(GetParam().exchanged, 9, 5);
    // What lies outside of the view is missing, hence 0.
    Image expected = seen;
    fill(expected, 0);
    for (unsigned y = 1; y < 5; ++y)
        std::copy_n(seen.plane[0].view[y] + 2 * bytes, 7 * bytes, expected.plane[0].view[y - 1]);
    beginAt(seen.plane[0], 2 * bytes, 1);
    GetParam().write(directory.file("view"), seen);
    GetParam().write(directory.file("whole"), expected);
    EXPECT_TRUE(fileBytes(directory.file("view")) == fileBytes(directory.file("whole")));
}

TEST_P(StillFormats, MemoryHoldsWhatAFileWould) {
    const std::string path = directory.file("a");
    const Image im = randomImage(GetParam().exchanged, 300, 200);
    GetParam().write(path, im);
    const std::string file = fileBytes(path);
    std::vector<unsigned char> bytes(3, 'x');
    EXPECT_THROW(Ko::writeImage(bytes, randomImage(GetParam().refused, 3, 1), GetParam().extension), std::logic_error);
    EXPECT_EQ(bytes.size(), 3u);
    Ko::writeImage(bytes, im, GetParam().extension);
    EXPECT_TRUE(std::string(bytes.begin(), bytes.end()) == file);
    Image fromFile(GetParam().exchanged), fromMemory(GetParam().exchanged);
    GetParam().read(fromFile, path);
    Ko::readImage(fromMemory, bytes.data(), bytes.size());
    EXPECT_EQ(difference(fromMemory, fromFile), "");
    // Every shorter one ends as the shorter file does, though the messages of libraries go to standard error.
    testing::internal::CaptureStderr();
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{3}, std::size_t{9}, bytes.size() / 2}) {
        directory.write("a", file.substr(0, size));
        const std::string told = thrownText<std::runtime_error>([&] { GetParam().read(fromFile, path); });
        const std::string inMemory =
            thrownText<std::runtime_error>([&] { Ko::readImage(fromMemory, bytes.data(), size); });
        EXPECT_TRUE(inMemory == told || (size < 9 && inMemory == "[readImage]: No known still.")) << size << inMemory;
        EXPECT_EQ(difference(fromMemory, fromFile), "") << size;
    }
    testing::internal::GetCapturedStderr();
}

TEST_P(StillFormats, TheApplicationsLimitComesBeforeAnyMemory) {
    const std::string path = directory.file("a");
    const Image im = randomImage(GetParam().exchanged, 30, 20);
    GetParam().write(path, im);
    Image read = randomImage(GetParam().exchanged, 3, 2);
    Ko::setMaxImagePixels(599);
    EXPECT_THAT([&] { GetParam().read(read, path); }, ThrowsMessage<std::runtime_error>(reading("Image too large.")));
    EXPECT_EQ(read.width, 3u);
    for (const std::uint64_t most : {std::uint64_t{600}, std::uint64_t{0}}) {
        Ko::setMaxImagePixels(most);
        GetParam().read(read, path);
        EXPECT_EQ(read.width, 30u);
    }
}

/// Descriptors of a file, other than the given one; waits for the first.
std::vector<int> othersOf(const std::string& path, int known) {
    std::vector<int> found;
    while (found.empty())
        for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
            std::error_code ignored;
            const int number = std::stoi(entry.path().filename());
            if (number != known && std::filesystem::read_symlink(entry, ignored) == path)
                found.push_back(number);
        }
    return found;
}

TEST_P(StillFormats, ProgramsStartedMeanwhileInheritNoFile) {
    const std::string path = directory.file("pipe"); // keeps whoever opens it waiting
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    for (const bool reads : {true, false}) {
        std::thread user([&] {
            Image im = randomImage(GetParam().exchanged, 400, 400); // more than a pipe holds
            if (reads)
                EXPECT_ANY_THROW(GetParam().read(im, path));
            else
                GetParam().write(path, im);
        });
        const int other = open(path.c_str(), reads ? O_WRONLY : O_RDONLY);
        for (const int number : othersOf(path, other))
            EXPECT_TRUE(fcntl(number, F_GETFD) & FD_CLOEXEC);
        char bytes[4096];
        while (!reads && ::read(other, bytes, sizeof bytes) > 0) {
            // all of it, so that the writer comes to its end
        }
        close(other);
        user.join();
    }
}

TEST(Dispatch, ThreadsReadAndWriteTheirOwnFilesAtOnce) {
    const TempDirectory directory;
    std::vector<std::thread> threads;
    std::atomic<int> same{0};
    for (unsigned t = 0; t < 4; ++t)
        threads.emplace_back([&directory, &same, t] {
            for (const std::string extension : {".ppm", ".png", ".jpg", ".png"}) {
                const Image im = randomImage(extension == ".jpg" ? Ko::PF_JFIF : Ko::PF_RGB, 16 + t, 9, t);
                const std::string path = directory.file(std::to_string(t) + extension);
                Ko::writeImage(path, im);
                Image back(im.format);
                Ko::readImage(back, path);
                same += extension == ".jpg" ? back.width == im.width : samples(back, 0) == samples(im, 0);
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(same, 16);
}

} // namespace
