// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Font.h"
#include "Kovanta/ImageFile.h"
#include "Kovanta/VideoInputImageFile.h"
#include "Kovanta/VideoInputVideoFile.h"
#include "Kovanta/VideoOutputVideoFile.h"
#include "faults/FailingCall.h"
#include "support/Rows.h"
#include "support/TempDirectory.h"
#include "support/TestImages.h"
#include "support/VideoMedia.h"

#include <gtest/gtest.h>

#include <sys/syscall.h>

#include <cerrno>
#include <stdexcept>

namespace {

using namespace test;

const FailingCall calls[] = {{"open", {SYS_open, SYS_openat}, EMFILE},
                             {"stat", {SYS_stat, SYS_fstat, SYS_newfstatat}, EIO},
                             {"read", {SYS_read, SYS_pread64}, EIO},
                             {"write", {SYS_write, SYS_writev, SYS_pwrite64}, ENOSPC},
                             {"truncate", {SYS_ftruncate}, EIO},
                             {"lseek", {SYS_lseek}, ESPIPE},
                             {"close", {SYS_close}, EIO},
                             {"mmap", {SYS_mmap}, ENOMEM},
                             {"thread", {SYS_clone, SYS_clone3}, EAGAIN}};

const TempDirectory& directory() {
    static const TempDirectory made;
    return made;
}

/// Ends the process in a way that is no outcome.
void require(bool condition) {
    if (!condition)
        _exit(99);
}

struct Operation : Row {
    void (*prepare)();
    void (*act)();
    bool (*verify)() = [] {
        return true;
    }; ///< Whether what was done without a refusal is right.
};

using Read = void (*)(Image&, const std::string&);
using Write = void (*)(const std::string&, const Image&);

template <Write write, Read read, Ko::PIXEL_FORMAT exchanged, Ko::PIXEL_FORMAT wanted = exchanged>
Operation reading(const char* name) {
    const auto prepare = [] {
        write(directory() / "still", randomImage(exchanged, 40, 30));
    };
    return {{name}, prepare, [] {
                Image im = randomImage(wanted, 3, 2);
                const Image before = im;
                try {
                    read(im, directory() / "still");
                } catch (const std::exception&) {
                    require(difference(im, before).empty());
                    throw;
                }
                require(im.width == 40 && im.height == 30);
            }};
}

template <Write write, Ko::PIXEL_FORMAT format>
Operation writing(const char* name) {
    const auto prepare = [] {
        write(directory() / "expected", randomImage(format, 40, 30));
        directory().write("written", std::string(20000, 'x'));
    };
    return {{name},
            prepare,
            [] { write(directory() / "written", randomImage(format, 40, 30)); },
            [] {
                return fileBytes(directory() / "written") == fileBytes(directory() / "expected");
            }};
}

void loadFont() {
    Ko::Font font;
    font.init(directory() / "font", 12);
    Image im = randomImage(Ko::PF_YCC444P, 60, 30);
    const Image before = im;
    font.drawText(im, "text", {2, 20}, {235, 128, 128});
    require(!difference(im, before).empty());
}

void makeFont() {
    directory().write("font", std::string(reinterpret_cast<const char*>(luximr_ttf), luximr_ttf_size));
}

void makeSequence() {
    std::filesystem::create_directories(directory() / "stills");
    for (const char* name : {"stills/a.pgm", "stills/b.png"})
        Ko::writeImage(directory() / name, randomImage(Ko::PF_YCC444P, 8, 6));
}

void readSequence() {
    Ko::VideoInputImageFile source(directory() / "stills");
    Image frame(Ko::PF_YCC444P);
    require(source.read(frame) && source.read(frame) && !source.read(frame));
}

void makeVideo() {
    encodeNumbered(directory() / "video.mp4", {64, 48, 12}, "-c:v mpeg4 -g 4");
}

void readVideo() {
    Ko::VideoInputVideoFile source(directory() / "video.mp4");
    Image frame(Ko::PF_YCC444P);
    source.seek(5, Ko::VP_BEGIN);
    require(!source.read(frame) || frameIndex(frame) >= 0);
}

void writeVideo() {
    Ko::VideoOutputVideoFile sink;
    sink.setEncoder("mpeg4").open(64, 48, directory() / "written.avi", {25, 1}, 400000);
    for (int i = 0; i < 5; ++i)
        sink.write(numberedFrame(i));
    sink.close();
    if (!sink.getError().empty())
        throw std::runtime_error(sink.getError());
}

bool videoIsWritten() {
    Ko::VideoInputVideoFile source(directory() / "written.avi");
    Image frame(Ko::PF_YCC444P);
    for (int i = 0; i < 5; ++i)
        if (!source.read(frame) || frameIndex(frame) != i)
            return false;
    return true;
}

class SystemCalls : public testing::TestWithParam<Operation> {};

INSTANTIATE_TEST_SUITE_P(
    All, SystemCalls,
    testing::Values(reading<Ko::writePpmImage, Ko::readPpmImage, Ko::PF_RGB>("ReadPpm"),
                    reading<Ko::writePgmImage, Ko::readPgmImage, Ko::PF_Y, Ko::PF_YCC444P>("ReadPgm"),
                    reading<Ko::writePngImage, Ko::readPngImage, Ko::PF_RGB, Ko::PF_YCC444P>("ReadPng"),
                    reading<Ko::writeJpegImage, Ko::readJpegImage, Ko::PF_JFIF>("ReadJpeg"),
                    writing<Ko::writePpmImage, Ko::PF_RGB>("WritePpm"),
                    writing<Ko::writePgmImage, Ko::PF_Y>("WritePgm"),
                    writing<Ko::writePngImage, Ko::PF_RGB>("WritePng"),
                    writing<Ko::writeJpegImage, Ko::PF_JFIF>("WriteJpeg"), Operation{{"Font"}, makeFont, loadFont},
                    Operation{{"Sequence"}, makeSequence, readSequence}, Operation{{"ReadVideo"}, makeVideo, readVideo},
                    Operation{{"WriteVideo"}, [] {}, writeVideo, videoIsWritten}),
    rowName);

TEST_P(SystemCalls, EachFailingInTurnIsRefusedOrSurvived) {
    GetParam().prepare();
    int refusedOpens = 0;
    for (const FailingCall& call : calls)
        for (int nth = 1; nth <= 60; ++nth) {
            const FaultOutcome outcome = withFailingCall(call, nth, GetParam().act);
            if (!outcome.reached) {
                EXPECT_EQ(outcome.ended, "done") << "nothing failed";
                break;
            }
            EXPECT_TRUE(outcome.ended == "refused" || (outcome.ended == "done" && GetParam().verify()))
                << call.name << " " << nth << ": " << outcome.ended;
            refusedOpens += &call == calls && outcome.ended == "refused";
        }
    EXPECT_GT(refusedOpens, 0);
}

} // namespace
