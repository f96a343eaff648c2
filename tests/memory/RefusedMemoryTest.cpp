// SPDX-License-Identifier: BSD-2-Clause
// Every operation, with each of its requests for memory refused in turn: an exception, the target as it was, nothing
// leaked, and the next call does its job.
#include "Kovanta/Kovanta.h"

#include "support/RefusedMemory.h"
#include "support/Rows.h"
#include "support/TempDirectory.h"
#include "support/TestImages.h"
#include "support/VideoMedia.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace test;
using Ko::PF_RGB;
using Ko::PF_Y;
using Ko::PF_YCC420P;
using Ko::PF_YCC444P;

struct Operation : Row {
    void (*walk)();
};

/// What an operation on images works with.
struct Images {
    Image target;
    Image source;
};

std::string describe(const Image& im) {
    std::string text = std::to_string(im.format) + " " + std::to_string(im.width) + "x" + std::to_string(im.height) +
                       " #" + std::to_string(im.sequenceNumber);
    for (int p = 0; p < 4; ++p) {
        const auto& plane = im.plane[p];
        text += "|" + std::to_string(im.horDiv[p]) + std::to_string(plane.alloc) + std::to_string(plane.width) + "x" +
                std::to_string(plane.height) + "/" + std::to_string(plane.subarrays.size());
        for (const auto& row : samples(im, p))
            text.append(row.begin(), row.end());
    }
    return text;
}

std::string describeBoth(const Images& images) {
    return describe(images.target) + describe(images.source);
}

/// A target of other size and format, with a view on its planes; a source whose planes have views as well, so that
/// their stacks need memory too.
template <Ko::PIXEL_FORMAT to, Ko::PIXEL_FORMAT from>
Images images() {
    Images made{randomImage(to, 4, 2, 1), randomImage(from, 8, 6, 2)};
    for (auto& plane : made.source.plane)
        if (plane.rows)
            plane.subarrays = {plane.subarrays[0], plane.subarrays[0]};
    return made;
}

template <Ko::PIXEL_FORMAT to, Ko::PIXEL_FORMAT from, class Run>
void onImages(Run run) {
    refuseEveryRequest(images<to, from>, run, describeBoth);
}

template <Ko::PIXEL_FORMAT to, Ko::PIXEL_FORMAT from>
void conversion() {
    onImages<to, from>([](Images& i) { Ko::convertIm(i.target, i.source); });
}

/// Reads a file into an image of the format, which holds another picture.
template <Ko::PIXEL_FORMAT to>
void reading(const char* extension) {
    const TempDirectory folder;
    const std::string name = folder / (std::string("a") + extension);
    Ko::writeImage(name, randomImage(PF_YCC444P, 16, 8));
    refuseEveryRequest([] { return randomImage(to, 4, 2); }, [&](Image& im) { Ko::readImage(im, name); },
                       [](const Image& im) { return describe(im); });
}

void writing(const char* extension) {
    const TempDirectory folder;
    const std::string name = folder / (std::string("a") + extension);
    refuseEveryRequest([] { return randomImage(PF_YCC444P, 16, 8); },
                       [&](const Image& im) { Ko::writeImage(name, im); },
                       [](const Image& im) { return describe(im); });
}

/// A file of twelve numbered frames: written, with the encoder or the container's default one.
void writeVideo(Ko::VideoOutputVideoFile& sink, const std::string& file, const char* encoder) {
    if (*encoder)
        sink.setEncoder(encoder);
    sink.setThrowOnFailure(true).open(64, 64, file, {25, 1}, 500000);
    for (int n = 0; n < 12; ++n)
        sink.write(numberedFrame(n, 64, 64));
    sink.close();
}

/// Reads it, seeks in it and loops.
void readVideo(Ko::VideoInputVideoFile& source, const std::string& file) {
    source.open(file);
    source.setLoop(true);
    Image frame(PF_YCC444P);
    for (int n = 0; n < 14; ++n)
        EXPECT_EQ(source.read(frame) ? frameIndex(frame) : -2, n % 12);
    EXPECT_EQ(source.seek(7, Ko::VP_BEGIN), 7);
    EXPECT_EQ(source.read(frame) ? frameIndex(frame) : -2, 7);
    source.close();
}

void writingVideo(const char* name, const char* encoder) {
    const TempDirectory folder;
    const auto make = [] {
        return std::make_unique<Ko::VideoOutputVideoFile>();
    };
    const auto run = [&](const auto& sink) {
        writeVideo(*sink, folder / name, encoder);
    };
    refuseEveryRequest(
        make, run, [](const auto&) { return ""; }, Requests::New);
}

const Operation operations[] = {
    {{"Copy"},
     [] {
         onImages<PF_RGB, PF_YCC444P>([](Images& i) { const Image copy(i.source); });
     }},
    {{"Assign"},
     [] {
         onImages<PF_RGB, PF_YCC444P>([](Images& i) { i.target = i.source; });
     }},
    {{"AssignCrop"},
     [] {
         onImages<PF_RGB, PF_YCC444P>([](Images& i) {
             const Image crop = Ko::wrapRectangle(i.source, 2, 2, 4, 4);
             i.source = crop;
         });
     }},
    {{"Move"},
     [] {
         onImages<PF_RGB, PF_YCC444P>([](Images& i) {
             Image copy(i.source);
             i.target = std::move(copy);
         });
     }},
    {{"Size"},
     [] {
         onImages<PF_YCC444P, PF_RGB>([](Images& i) { i.target.size(9, 9); });
     }},
    {{"SizeForWrapping"},
     [] {
         onImages<PF_YCC444P, PF_RGB>([](Images& i) { i.target.size(9, 9, false); });
     }},
    {{"Resize"},
     [] {
         onImages<PF_YCC444P, PF_RGB>([](Images& i) { i.target.plane[0].resize(9, 9); });
     }},
    {{"NewData"},
     [] {
         onImages<PF_YCC444P, PF_RGB>([](Images& i) { i.target.plane[0].newData(9, 9, false); });
     }},
    {{"WrapRectangle"},
     [] {
         onImages<PF_RGB, PF_YCC444P>([](Images& i) { Ko::wrapRectangle(i.source, 0, 0, 4, 4); });
     }},
    {{"ConvertFromRgb"}, conversion<PF_YCC444P, PF_RGB>},
    {{"ConvertFrom420"}, conversion<PF_YCC444P, PF_YCC420P>},
    {{"ConvertToGrey"}, conversion<PF_Y, PF_YCC444P>},
    {{"ConvertTheSame"}, conversion<PF_YCC444P, PF_YCC444P>},
    {{"ConvertUnsupported"},
     [] {
         onImages<PF_YCC420P, PF_RGB>([](Images& i) {
             try {
                 Ko::convertIm(i.target, i.source);
                 ADD_FAILURE();
             } catch (const std::logic_error&) {
             }
         });
     }},
    {{"ConvertFromCrop"},
     [] {
         onImages<PF_YCC444P, PF_RGB>([](Images& i) {
             const Ko::PlaneMemory luma = {i.target.plane[0].row(0), 4};
             Ko::convertIm(i.target, Ko::wrapMemory(PF_Y, 4, 2, {luma}));
         });
     }},
    {{"FlipVer"},
     [] {
         onImages<PF_RGB, PF_YCC444P>([](Images& i) { Ko::flipVer(i.target, i.source); });
     }},
    {{"FlipHor"},
     [] {
         onImages<PF_YCC444P, PF_RGB>([](Images& i) { Ko::flipHor(i.target, i.source); });
     }},
    {{"FlipInPlace"},
     [] {
         onImages<PF_RGB, PF_RGB>([](Images& i) { Ko::flipHor(i.source); });
     }},
    {{"Scale"},
     [] {
         onImages<PF_YCC420P, PF_YCC420P>([](Images& i) { Ko::resize(i.target, i.source); });
     }},
    {{"ScaleWithin"},
     [] {
         onImages<PF_RGB, PF_RGB>([](Images& i) { Ko::resize(i.source, i.source); });
     }},
    {{"Queue"},
     [] {
         onImages<PF_RGB, PF_YCC444P>([](Images& i) {
             Ko::ThreadedBuffer<Image> buffer;
             buffer.put(i.source);
             EXPECT_EQ(describe(buffer.get()), describe(i.source));
         });
     }},
    {{"Timer"},
     [] {
         refuseEveryRequest([] { return Ko::Timer(); }, [](Ko::Timer& t) { t.getCum(""); },
                            [](Ko::Timer& t) { return std::to_string(t.getCum("")); });
     }},
    {{"ReadPpm"},
     [] {
         reading<PF_RGB>(".ppm");
     }},
    {{"ReadPpmConverted"},
     [] {
         reading<PF_YCC444P>(".ppm");
     }},
    {{"ReadPgm"},
     [] {
         reading<PF_Y>(".pgm");
     }},
    {{"ReadPgmConverted"},
     [] {
         reading<PF_YCC420P>(".pgm");
     }},
    {{"WritePgm"},
     [] {
         writing(".pgm");
     }},
    {{"Sequence"},
     [] {
         const TempDirectory folder;
         for (const char* name : {"a.pgm", "b.png", "c.jpg"})
             Ko::writeImage(folder / name, randomImage(PF_YCC444P, 16, 8));
         refuseEveryRequest([] { return Image(PF_YCC444P); },
                            [&](const Image&) {
                                Ko::VideoInputImageFile source(folder.path());
                                Image frame(PF_YCC444P);
                                while (source.read(frame)) {
                                    // every still
                                }
                            },
                            [](const Image& im) { return describe(im); });
     }},
    {{"ReadPng"},
     [] {
         reading<PF_RGB>(".png");
     }},
    {{"ReadPngConverted"},
     [] {
         reading<PF_YCC444P>(".png");
     }},
    {{"ReadJpeg"},
     [] {
         reading<Ko::PF_JFIF>(".jpg");
     }},
    {{"ReadJpegConverted"},
     [] {
         reading<PF_YCC444P>(".jpg");
     }},
    {{"WritePpm"},
     [] {
         writing(".ppm");
     }},
    {{"WritePng"},
     [] {
         writing(".png");
     }},
    {{"WriteJpeg"},
     [] {
         writing(".jpg");
     }},
    {{"ReadVideo"},
     [] {
         const TempDirectory folder;
         Ko::VideoOutputVideoFile sink;
         writeVideo(sink, folder / "a.avi", "");
         refuseEveryRequest([] { return std::make_unique<Ko::VideoInputVideoFile>(); },
                            [&](const auto& source) { readVideo(*source, folder / "a.avi"); },
                            [](const auto&) { return ""; }, Requests::New);
     }},
    {{"WriteVideo"},
     [] {
         writingVideo("a.avi", "");
     }},
    {{"WriteVideoThatMustBeFed"},
     [] {
         writingVideo("a.mkv", "libsvtav1");
     }},
};

class RefusedMemoryIn : public testing::TestWithParam<Operation> {};

TEST_P(RefusedMemoryIn, LeavesTheTargetAsItWas) {
    GetParam().walk();
}

INSTANTIATE_TEST_SUITE_P(Operations, RefusedMemoryIn, testing::ValuesIn(operations), rowName);

} // namespace
