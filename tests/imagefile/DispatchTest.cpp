#include "Kovanta/ImageFile.h"

#include "support/TempDirectory.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using testing_support::fileBytes;
using testing_support::Image;
using testing_support::randomImage;
using testing_support::samples;
using testing_support::TempDirectory;
using testing_support::thrownText;

TEST(Dispatch, TheLastExtensionChoosesTheFormatInAnyCase) {
    const TempDirectory directory;
    const Image im = randomImage(Ko::PF_YCC444P, 6, 4);
    const struct {
        const char* name;
        std::string magic;
    } cases[] = {
        {"a.ppm", "P6"},
        {"a.PPM", "P6"},
        {"a.pgm", "P5"},
        {"a.pGm", "P5"},
        {"a.b.png", "\x89PNG"},
        {".png", "\x89PNG"},
        {"photo.JPG", "\xFF\xD8"},
        {"photo.Jpeg", "\xFF\xD8"},
        {"photo.jpeg", "\xFF\xD8"},
    };
    for (const auto& c : cases) {
        const std::string path = directory.file(c.name);
        Ko::writeImage(path, im);
        EXPECT_EQ(fileBytes(path).substr(0, c.magic.size()), c.magic) << c.name;
        Image back(Ko::PF_YCC444P);
        Ko::readImage(back, path);
        EXPECT_EQ(back.width, 6u) << c.name;
        EXPECT_EQ(back.height, 4u) << c.name;
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
        EXPECT_EQ(thrownText<std::out_of_range>([&] { Ko::readImage(im, name); }).rfind("basic_string::substr", 0), 0u);
        EXPECT_EQ(thrownText<std::out_of_range>([&] { Ko::writeImage(name, im); }).rfind("basic_string::substr", 0),
                  0u);
    }
}

TEST(Dispatch, WhatCannotBeOpenedIsNamedWithTheSystemsReason) {
    const TempDirectory directory;
    const std::string missing = "/No such file or directory";
    const struct {
        const char* extension;
        const char* kind;
        void (*read)(Image&, const std::string&);
        void (*write)(const std::string&, const Image&);
    } formats[] = {
        {".ppm", "Ppm", Ko::readPpmImage, Ko::writePpmImage},
        {".pgm", "Pgm", Ko::readPgmImage, Ko::writePgmImage},
        {".png", "Png", Ko::readPngImage, Ko::writePngImage},
        {".jpg", "Jpeg", Ko::readJpegImage, Ko::writeJpegImage},
    };
    for (const auto& f : formats) {
        const std::string reader = std::string("[read") + f.kind + "Image]: Cannot open ";
        const std::string writer = std::string("[write") + f.kind + "Image]: Cannot open ";
        const std::string folder = directory.file(std::string("folder") + f.extension);
        std::filesystem::create_directory(folder);
        const std::pair<std::string, const char*> names[] = {
            {directory.file("absent/a") + f.extension, "No such file or directory"},
            {folder, "Is a directory"},
            {"", "No such file or directory"},
            {directory.file(std::string(300, 'n')) + f.extension, "File name too long"},
        };
        for (const auto& [name, reason] : names) {
            Image im = randomImage(Ko::PF_YCC444P, 3, 2);
            const auto before = samples(im, 0);
            EXPECT_EQ(thrownText<std::runtime_error>([&] { f.read(im, name); }), reader + name + ": " + reason + ".");
            EXPECT_EQ(thrownText<std::runtime_error>([&] { f.write(name, im); }), writer + name + ": " + reason + ".");
            EXPECT_EQ(samples(im, 0), before);
        }
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
