#include "Kovanta/ImageFile.h"

#include "support/TempDirectory.h"
#include "support/TestImages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace test;

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

TEST(Dispatch, NamesWithoutAKnownExtensionAreRefused) {
    Image im = randomImage(Ko::PF_RGB, 2, 2);
    for (const std::string name : {"pic.bmp", "x.tiff", "x.jpg.bak", "ends.", "d.x/picture", ".", "a.png "}) {
        EXPECT_EQ(thrownText<std::logic_error>([&] { Ko::readImage(im, name); }),
                  "[readImage]: Cannot read " + name + ": extension not recognized.");
        EXPECT_EQ(thrownText<std::logic_error>([&] { Ko::writeImage(name, im); }),
                  "[writeImage]: Cannot write " + name + ": extension not recognized.");
    }
    for (const std::string name : {"", "picture", "dir/picture"}) {
        const auto startsRight = testing::StartsWith("basic_string::substr");
        EXPECT_THAT(thrownText<std::out_of_range>([&] { Ko::readImage(im, name); }), startsRight);
        EXPECT_THAT(thrownText<std::out_of_range>([&] { Ko::writeImage(name, im); }), startsRight);
    }
}

TEST(Dispatch, WhatCannotBeOpenedIsNamedWithTheSystemsReason) {
    const TempDirectory directory;
    const struct {
        const char* kind;
        void (*read)(Image&, const std::string&);
        void (*write)(const std::string&, const Image&);
    } formats[] = {{"Ppm", Ko::readPpmImage, Ko::writePpmImage},
                   {"Pgm", Ko::readPgmImage, Ko::writePgmImage},
                   {"Png", Ko::readPngImage, Ko::writePngImage},
                   {"Jpeg", Ko::readJpegImage, Ko::writeJpegImage}};
    const std::pair<std::string, std::string> names[] = {{directory.file("absent/a"), ": No such file or directory."},
                                                         {directory.path(), ": Is a directory."},
                                                         {"", ": No such file or directory."},
                                                         {std::string(300, 'n'), ": File name too long."}};
    for (const auto& format : formats)
        for (const auto& [file, reason] : names) {
            const std::string& name = file;
            const Image before = randomImage(Ko::PF_YCC444P, 3, 2);
            Image im = before;
            const std::string text = std::string(format.kind) + "Image]: Cannot open " + name + reason;
            EXPECT_EQ(thrownText<std::runtime_error>([&] { format.read(im, name); }), "[read" + text);
            EXPECT_EQ(thrownText<std::runtime_error>([&] { format.write(name, im); }), "[write" + text);
            EXPECT_EQ(difference(im, before), "");
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
