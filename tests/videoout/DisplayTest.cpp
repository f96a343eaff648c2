// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoOutputDisplay.h"

#include "support/Resources.h"
#include "support/TestImages.h"
#include "videoout/KnownLeaks.h"
#include "videoout/XClient.h"

#include <SDL.h>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <utility>

/// A mode that the server lists first and does not switch to, as real ones do; none while it is empty.
static SDL_Rect refusedMode{};

extern "C" SDL_Rect** SDL_ListModes(SDL_PixelFormat* format, Uint32 flags) {
    static SDL_Rect* modes[] = {&refusedMode, nullptr};
    static const auto real = reinterpret_cast<decltype(&SDL_ListModes)>(dlsym(RTLD_NEXT, "SDL_ListModes"));
    return refusedMode.w != 0 ? modes : real(format, flags);
}

/// What SDL refuses on demand, since what it refuses by itself differs between SDL 1.2 and its layer over SDL 2.
static bool refusesModes = false;
static bool refusesOverlays = false;

extern "C" SDL_Surface* SDL_SetVideoMode(int width, int height, int bits, Uint32 flags) {
    if (refusesModes) {
        SDL_SetError("refused");
        return nullptr;
    }
    static const auto real = reinterpret_cast<decltype(&SDL_SetVideoMode)>(dlsym(RTLD_NEXT, "SDL_SetVideoMode"));
    SDL_Surface* const surface = real(width, height, bits, flags);
    if (refusedMode.w != 0 && width == refusedMode.w)
        user::makeAnError();
    return surface;
}

extern "C" SDL_Overlay* SDL_CreateYUVOverlay(int width, int height, Uint32 format, SDL_Surface* display) {
    if (refusesOverlays) {
        SDL_SetError("refused");
        return nullptr;
    }
    static const auto real =
        reinterpret_cast<decltype(&SDL_CreateYUVOverlay)>(dlsym(RTLD_NEXT, "SDL_CreateYUVOverlay"));
    return real(width, height, format, display);
}

namespace {

using Ko::Image;
using Ko::PF_Y;
using Ko::PF_YCC420P;
using Ko::PF_YCC444P;
using testing::ThrowsMessage;
using Display = Ko::VideoOutputDisplay;

constexpr unsigned int frameWidth = 64;
constexpr unsigned int frameHeight = 48;
constexpr user::Geometry wholeScreen{0, 0, 1024, 768};

using Ycc = std::array<int, 3>;

/// Four fields of strong, different colours, so that swapped planes, rows or columns show.
Ycc colorAt(unsigned int x, unsigned int y, unsigned int w = frameWidth, unsigned int h = frameHeight) {
    constexpr Ycc fields[2][2] = {{{90, 200, 100}, {130, 60, 190}}, {{180, 128, 60}, {60, 140, 150}}};
    return fields[y >= h / 2][x >= w / 2];
}

Image<> frame(Ko::PIXEL_FORMAT format, unsigned int w = frameWidth, unsigned int h = frameHeight) {
    Image im(format);
    im.size(w, h);
    for (std::size_t p = 0; p < 3; ++p)
        for (unsigned int y = 0; im.plane[p].rows && y < im.plane[p].height; ++y)
            for (unsigned int x = 0; x < im.plane[p].width; ++x)
                im.plane[p].view[y][x] =
                    static_cast<unsigned char>(colorAt(x * im.horDiv[p], y * im.verDiv[p], w, h)[p]);
    return im;
}

/// Whether SDL makes this of a sample where it draws the overlay itself, by BT.601: SDL 1.2 leaves the luma in its
/// range, its layer over SDL 2 spreads both to 0..255.
bool shows(const user::Rgb& is, const Ycc& c, bool grey = false) {
    const int y = grey ? c[0] * 219 / 255 + 16 : c[0], cb = grey ? 0 : c[1] - 128, cr = grey ? 0 : c[2] - 128;
    const double r = 1.402 * cr, g = -0.714 * cr - 0.344 * cb, b = 1.772 * cb;
    const auto is601 = [&](double luma, double spread) {
        const double want[] = {luma + spread * r, luma + spread * g, luma + spread * b};
        return std::equal(is.begin(), is.end(), want, [](int a, double sample) {
            return std::abs(a - std::lround(std::min(255.0, std::max(0.0, sample)))) <= 3;
        });
    };
    return is601(y, 1) || is601((y - 16) * 255 / 219.0, 255 / 224.0);
}

/// Every pixel of the area is the frame's, stretched; those that a stretch may give to either field are left out.
void expectOnScreen(user::Geometry area, bool grey = false) {
    const auto pixels = user::screen(area);
    const auto between = [](unsigned int a, unsigned int length, unsigned int stretch) {
        return stretch > 1 && a + 2 * stretch >= length / 2 && a <= length / 2 + 2 * stretch;
    };
    for (unsigned int y = 0; y < area.height; ++y)
        for (unsigned int x = 0; x < area.width; ++x) {
            if (between(x, area.width, area.width / frameWidth) || between(y, area.height, area.height / frameHeight))
                continue;
            const user::Rgb is = pixels[y * area.width + x];
            ASSERT_TRUE(shows(is, colorAt(x, y, area.width, area.height), grey))
                << x << "," << y << ": " << testing::PrintToString(is);
        }
}

/// Whether the last pixel of the window is the frame's.
bool showsLastCorner() {
    return shows(user::screen(user::geometry()).back(), colorAt(frameWidth - 1, frameHeight - 1));
}

/// Handles events until the condition holds; gives up after a time that no working server needs.
bool reaches(Display& display, const std::function<bool()>& condition) {
    for (int i = 0; i < 1000; ++i) {
        display.videoPollEvents();
        if (condition())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

/// A display of small frames and its window.
struct Shown : Display {
    explicit Shown(unsigned int onScreen = frameWidth)
        : Display(onScreen, 1, frameWidth, frameHeight, false) {
        user::takeWindow();
    }
};

template <class Exception>
void expectRefusal(unsigned int windowWidth, unsigned int w, unsigned int h, const std::string& reason) {
    EXPECT_THAT([&] { Display(windowWidth, 1, w, h, false); },
                ThrowsMessage<Exception>("[VideoOutputDisplay::VideoOutputDisplay]: " + reason));
}

void expectThatItWorks() {
    Shown display;
    EXPECT_TRUE(display.write(frame(PF_YCC444P)));
    EXPECT_TRUE(reaches(display, showsLastCorner));
    expectOnScreen(user::geometry());
}

TEST(DisplayTest, RefusesFrameSizesBeforeAnythingIsOpened) {
    const std::string even = "Width and height of must both be even!";
    const std::string zero = "Width and height must not be zero.";
    expectRefusal<std::logic_error>(320, 641, 480, even);
    expectRefusal<std::logic_error>(320, 640, 481, even);
    expectRefusal<std::logic_error>(320, 0, 480, zero);
    expectRefusal<std::logic_error>(320, 640, 0, zero);
    EXPECT_EQ(SDL_WasInit(SDL_INIT_VIDEO), 0u);
}

TEST(DisplayTest, ReportsWhatSdlCannotDoAndLeavesItInitialised) {
    const auto expectFailure = [](unsigned int window, unsigned int w, unsigned int h, const std::string& reason) {
        expectRefusal<std::runtime_error>(window, w, h, reason);
        EXPECT_NE(SDL_WasInit(SDL_INIT_VIDEO), 0u);
    };
    for (bool* const refuses : {&refusesModes, &refusesOverlays}) {
        *refuses = true;
        expectFailure(64, 64, 48,
                      (refusesModes ? "SDL_SetVideoMode" : "SDL_CreateYUVOverlay") + std::string(" failed: refused."));
        *refuses = false;
    }
    expectFailure(40000, 64, 48, "SDL_SetVideoMode failed: Window too large.");
    expectFailure(100, 2, 2000, "SDL_SetVideoMode failed: Window too large.");
    expectFailure(64, 70000, 70000, "SDL_CreateYUVOverlay failed: Frames too large.");
    expectFailure(64, 65000, 65000, "SDL_CreateYUVOverlay failed: Frames too large.");
    expectThatItWorks();
    EXPECT_EQ(SDL_WasInit(SDL_INIT_VIDEO), 0u);
}

TEST(DisplayTest, WithoutAServerThereIsOneClearExceptionEachTime) {
    const std::string server = std::getenv("DISPLAY");
    const auto text =
        testing::AllOf(testing::StartsWith("[VideoOutputDisplay::VideoOutputDisplay]: Unable to init SDL: "),
                       testing::EndsWith(".\n"));
    // SDL's terminal drivers would end the process where the terminal is unknown.
    const std::string terminal = std::getenv("TERM") ? std::getenv("TERM") : "";
    unsetenv("TERM");
    unsetenv("DISPLAY");
    for (int twice = 0; twice < 2; ++twice) {
        EXPECT_THAT([] { Display(64, 1, 64, 48, false); }, ThrowsMessage<std::runtime_error>(text));
        setenv("DISPLAY", ":12345", 1);
    }
    EXPECT_EQ(std::getenv("SDL_VIDEODRIVER"), nullptr);
    setenv("DISPLAY", server.c_str(), 1);
    setenv("TERM", terminal.c_str(), 1);
    expectThatItWorks();
}

TEST(DisplayTest, ShowsTheColoursOfEveryFormat) {
    for (const unsigned int scale : {1u, 2u, 5u})
        for (const auto format : {PF_YCC444P, PF_YCC420P, PF_Y}) {
            SCOPED_TRACE(std::to_string(scale) + " " + fmt2string(format));
            Shown display(scale * frameWidth);
            EXPECT_TRUE(display.write(frame(format)));
            ASSERT_EQ(user::geometry().height, scale * frameHeight);
            expectOnScreen(user::geometry(), format == PF_Y);
        }
}

TEST(DisplayTest, WhatIsRefusedLeavesTheDisplayAsItIs) {
    Shown display;
    for (const Image<>& other : {frame(PF_Y, 66, 48), frame(PF_Y, 64, 50), frame(PF_Y, 62, 46), frame(PF_Y, 0, 0)})
        EXPECT_THAT([&] { display.write(other); },
                    ThrowsMessage<std::logic_error>("[VideoOutputDisplay::write]: Frame does not fit the display."));
    for (int twice = 0; twice < 2; ++twice) { // the overlay stays locked meanwhile
        EXPECT_THAT([&] { display.write(frame(Ko::PF_RGB)); },
                    ThrowsMessage<std::logic_error>(testing::StartsWith("[convertIm]: ")));
        expectRefusal<std::logic_error>(64, 64, 48, "Only one display may exist at a time.");
    }
    EXPECT_TRUE(display.write(frame(PF_YCC444P)));
    expectOnScreen(user::geometry());
}

TEST(DisplayTest, AFrameSmallerInOneDirectionCoversItsPart) {
    const std::pair<unsigned int, unsigned int> sizes[] = {{64, 21}, {31, 48}, {64, 0}};
    for (const auto format : {PF_YCC444P, PF_YCC420P, PF_Y}) {
        Shown display;
        for (const auto& [w, h] : sizes) {
            Image flat(format);
            flat.size(w, h);
            test::fill(flat, 200);
            EXPECT_TRUE(display.write(flat));
        }
        const auto pixels = user::screen(user::geometry());
        for (const unsigned int y : {0u, 20u, 40u})
            EXPECT_TRUE(shows(pixels[y * frameWidth + 10], {200, 200, 200}, format == PF_Y)) << y;
        EXPECT_TRUE(shows(pixels[40 * frameWidth + 50], {16, 128, 128})) << "black where no frame has been";
    }
}

/// Whether SDL 1.2 is its layer over SDL 2, which has the version numbers that SDL itself did not reach.
bool isLayer() {
    return SDL_Linked_Version()->patch >= 50;
}

/// Whether the window has this title, and its icon where SDL gives it one: the layer over SDL 2 does not.
bool isTitled(const std::string& title) {
    const std::string titles = user::titles();
    return titles == title + "\n" + (isLayer() ? "" : title + "\n");
}

TEST(DisplayTest, CaptionsAreBothSet) {
    char mine[] = "mine";
    char* before = mine;
    for (const std::string wanted : {"VideoOutputDisplay", "mine"}) {
        Shown display;
        EXPECT_TRUE(isTitled(wanted)) << user::titles();
        display.setCaption("clip.mp4, 3 of 9");
        EXPECT_TRUE(reaches(display, [] { return isTitled("clip.mp4, 3 of 9"); }));
        std::swap(DEFAULT_CAPTION, before);
    }
}

TEST(DisplayTest, TheWindowKeepsTheAspectRatioAndTheFrame) {
    Shown display(0);
    EXPECT_EQ(user::geometry().width * user::geometry().height, 1u);
    display.write(frame(PF_YCC444P));
    const struct { unsigned int w, h, height; } rows[] = {{800, 100, 600}, {33, 300, 24}, {1, 300, 1}, {640, 300, 480}};
    for (const auto& row : rows) {
        user::resize(row.w, row.h);
        EXPECT_TRUE(reaches(display, [&] { return user::geometry().height == row.height; })) << row.w;
        EXPECT_EQ(user::geometry().width, row.w);
    }
    EXPECT_TRUE(reaches(display, showsLastCorner));
    expectOnScreen(user::geometry());
}

TEST(DisplayTest, AnExposedWindowShowsTheFrameAgain) {
    Shown display(192);
    display.write(frame(PF_YCC444P));
    // SDL restores its surface by itself, but overlays that the graphics card draws are not in it.
    SDL_FillRect(SDL_GetVideoSurface(), nullptr, 0);
    SDL_UpdateRect(SDL_GetVideoSurface(), 0, 0, 0, 0);
    SDL_Event event{};
    event.type = SDL_VIDEOEXPOSE;
    SDL_PushEvent(&event);
    EXPECT_TRUE(reaches(display, showsLastCorner));
    expectOnScreen(user::geometry());
}

/// Whether the last frame is on the whole screen, or in a window of 192 x 144.
bool covers(Display& display, bool whole) {
    return reaches(display, [&] {
        const bool all = shows(user::screen(wholeScreen).back(), colorAt(63, 47));
        const user::Geometry window = user::geometry();
        return whole ? all : !all && window.width == 192 && window.height == 144 && showsLastCorner();
    });
}

TEST(DisplayTest, FullScreenAndBackWithTheSameFrame) {
    for (const SDL_Rect listed : {SDL_Rect{}, SDL_Rect{0, 0, 2000, 1500}}) {
        refusedMode = listed;
        Shown display(192);
        display.write(frame(PF_YCC444P));
        for (const bool on : {true, false, true}) {
            user::key("f");
            EXPECT_TRUE(covers(display, on));
        }
        expectOnScreen(wholeScreen);
        for (const bool on : {true, false, false}) { // a setter, not a switch
            display.toggleFullscreen(on);
            EXPECT_TRUE(covers(display, on));
        }
        display.setMode();
        EXPECT_TRUE(covers(display, false));
        expectOnScreen(user::geometry());
    }
    refusedMode = {};
}

TEST(DisplayTest, AnotherFrameSizeKeepsWindowModeKeysAndSteps) {
    Shown display(192);
    display.write(frame(PF_YCC444P));
    const struct {
        unsigned int w, h;
        std::string reason;
    } rows[] = {{63, 48, "Width and height of must both be even!"},
                {64, 0, "Width and height must not be zero."},
                {2, 400, "SDL_SetVideoMode failed: Window too large."},
                {70000, 2, "SDL_CreateYUVOverlay failed: Frames too large."}};
    for (const auto& row : rows)
        EXPECT_THAT([&] { display.setFrameSize(row.w, row.h); },
                    ThrowsMessage<std::exception>("[VideoOutputDisplay::setFrameSize]: " + row.reason));
    display.write(frame(PF_YCC444P));
    user::key("p");
    EXPECT_TRUE(reaches(display, [&] { return display.getStepMode(); }));
    user::key("q");
    display.setFrameSize(64, 96);
    EXPECT_TRUE(display.getStepMode() && display.getPaused() && !display.getQuit());
    EXPECT_TRUE(reaches(display, [&] { return display.getQuit() && user::geometry().height == 288; }));
    EXPECT_THAT(user::screen(user::geometry()), testing::Each(user::Rgb{0, 0, 0})) << "shows what no frame has written";
    display.write(frame(PF_YCC444P, 64, 96));
    expectOnScreen(user::geometry());

    user::resize(300, 100); // of no account by then
    display.toggleFullscreen(true);
    display.setFrameSize(frameWidth, frameHeight);
    EXPECT_TRUE(display.getFullscreen());
    display.write(frame(PF_YCC444P));
    expectOnScreen(wholeScreen);
    user::key("f");
    EXPECT_TRUE(covers(display, false));
    EXPECT_FALSE(display.getFullscreen());
}

TEST(DisplayTest, AWindowIsFittedToTheScreenOnRequest) {
    expectRefusal<std::runtime_error>(64, 70000, 70000, "SDL_CreateYUVOverlay failed: Frames too large.");
    Display display(2000, 1600, false); // SDL, which goes on, has forgotten the screen's size
    user::takeWindow();
    const auto isOf = [&](unsigned int w, unsigned int h) {
        return reaches(display, [&] { return user::geometry().width == w && user::geometry().height == h; });
    };
    EXPECT_TRUE(isOf(900, 720)); // 15 of 16 parts of the screen
    display.setFrameSize(2000, 100);
    EXPECT_TRUE(isOf(960, 48));
    display.setFitScreen(false);
    EXPECT_TRUE(isOf(2000, 100));
    user::resize(1000, 50);
    EXPECT_TRUE(isOf(1000, 50));
    display.setFitScreen(true);
    user::resize(300, 20);
    EXPECT_TRUE(isOf(300, 15));
}

TEST(DisplayTest, StartsInFullScreenWithBordersOnRequest) {
    Display display(192, 1, 64, 96, true);
    const Image im = frame(PF_YCC444P, 64, 96);
    display.write(im);
    expectOnScreen(wholeScreen);
    display.setKeepAspect(true);
    for (const bool anew : {false, true}) {
        if (anew)
            display.setFrameSize(frameWidth, frameHeight), display.setFrameSize(64, 96), display.write(im);
        // SDL's layer over SDL 2 draws when it is asked for events.
        EXPECT_TRUE(reaches(display, [] {
            return user::screen({0, 0, 1, 1})[0] == user::Rgb{0, 0, 0} &&
                   shows(user::screen({256, 0, 512, 768}).back(), colorAt(frameWidth - 1, frameHeight - 1));
        }));
        expectOnScreen({256, 0, 512, 768});
        for (const int x : {0, 768})
            EXPECT_THAT(user::screen({x, 0, 256, 768}), testing::Each(user::Rgb{0, 0, 0}));
    }
    display.setKeepAspect(false);
    EXPECT_TRUE(reaches(display, [] { return user::screen({0, 0, 1, 1})[0] != user::Rgb{0, 0, 0}; }));
    expectOnScreen(wholeScreen);
    display.toggleFullscreen(false);
    user::takeWindow();
    EXPECT_EQ(user::geometry().height, 288u);
}

TEST(DisplayTest, KeysPauseStepAndResume) {
    const Image<> im = frame(PF_YCC444P);
    for (const char* pause : {"p", "Pause"}) {
        Shown display;
        // Key presses arrive in order: once a later one had its effect, an earlier one had none.
        const auto expectAfter = [&](const char* key, bool paused, bool pausedByWrite) {
            user::key(key);
            EXPECT_TRUE(reaches(display, [&] { return display.getPaused() == paused; }));
            display.write(im);
            EXPECT_EQ(display.getPaused(), pausedByWrite);
        };
        EXPECT_FALSE(display.getPaused());
        for (const char* nothing : {"space", "Escape", "x"}) // space: nothing while running
            user::key(nothing);
        expectAfter(pause, true, true);
        for (int step = 0; step < 3; ++step)
            expectAfter("space", false, true);
        expectAfter(pause, false, false);

        // The application's own pause: the key then turns to single steps.
        display.setPaused(true);
        display.write(im);
        EXPECT_TRUE(display.getPaused());
        expectAfter(pause, false, true);
        expectAfter(pause, false, false);
        EXPECT_FALSE(display.getQuit());
    }
}

TEST(DisplayTest, QuitsByKeyAndByClosing) {
    for (const bool byKey : {true, false}) {
        Shown display;
        EXPECT_FALSE(display.getQuit());
        for (int twice = 0; twice < 2; ++twice) {
            byKey ? user::key("q") : user::close();
            EXPECT_TRUE(reaches(display, [&] { return display.getQuit(); }));
        }
    }
}

template <class Step>
void expectLoss(void (*blow)(), const Step& step, const testing::Matcher<const std::string&>& text) {
    const LeaksAllowed allowed;
    Shown display;
    display.write(frame(PF_YCC444P));
    blow();
    const auto goOn = [&] {
        for (int i = 0; i < 1000; ++i)
            step(display);
    };
    EXPECT_THAT(goOn, ThrowsMessage<std::runtime_error>(text));
    if (blow != user::kill)
        return;
    // Whoever goes on without a server is told again.
    EXPECT_THROW(display.write(frame(PF_Y)), std::runtime_error);
    EXPECT_THROW(display.setCaption("x"), std::runtime_error);
    EXPECT_THROW(display.toggleFullscreen(true), std::runtime_error);
}

TEST(DisplayTest, ALostWindowOrServerIsAnException) {
    if (isLayer())
        GTEST_SKIP() << "SDL's layer over SDL 2 may wait for ever for a server that it has lost";
    const auto write = [im = frame(PF_YCC444P)](Display& display) {
        display.write(im);
    };
    const auto poll = [](Display& display) {
        display.videoPollEvents();
    };
    const std::size_t connections = test::openDescriptors("socket:");
    testing::internal::CaptureStderr(); // the destructor may have something to say as well
    expectLoss(user::destroyWindow, write, testing::HasSubstr("]: X error: Bad"));
    expectLoss(user::kill, write, testing::StartsWith("[VideoOutputDisplay::write]: "));
    expectLoss(user::kill, poll, "[VideoOutputDisplay::videoPollEvents]: Lost the connection to the X server.");
    {
        const LeaksAllowed allowed;
        const Shown noticedAtTheEnd;
        user::kill();
    }
    EXPECT_EQ(test::openDescriptors("socket:"), connections);
    testing::internal::GetCapturedStderr();
    expectThatItWorks();
}

} // namespace
