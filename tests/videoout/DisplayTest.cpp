#include "Kovanta/VideoOutputDisplay.h"

#include "support/TestImages.h"
#include "videoout/KnownLeaks.h"
#include "videoout/XClient.h"

#include <SDL.h>
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

/// Xlib loses a string of 13 bytes with every connection. Read by the leak checker, which defines it weakly.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libX11.so\n";
}

namespace {

using Ko::PF_Y;
using Ko::PF_YCC420P;
using Ko::PF_YCC444P;
using test::Image;
using test::thrownText;
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

Image frame(Ko::PIXEL_FORMAT format, unsigned int w = frameWidth, unsigned int h = frameHeight) {
    Image im(format);
    im.size(w, h);
    for (std::size_t p = 0; p < 3; ++p)
        for (unsigned int y = 0; im.plane[p].rows && y < im.plane[p].height; ++y)
            for (unsigned int x = 0; x < im.plane[p].width; ++x)
                im.plane[p].view[y][x] =
                    static_cast<unsigned char>(colorAt(x * im.horDiv[p], y * im.verDiv[p], w, h)[p]);
    return im;
}

/// Whether SDL makes this of a sample where it draws the overlay itself: BT.601 with the luma left in its range.
bool shows(const user::Rgb& is, const Ycc& c, bool grey = false) {
    const int y = grey ? c[0] * 219 / 255 + 16 : c[0], cb = grey ? 0 : c[1] - 128, cr = grey ? 0 : c[2] - 128;
    const double want[] = {y + 1.402 * cr, y - 0.714 * cr - 0.344 * cb, y + 1.772 * cb};
    return std::equal(is.begin(), is.end(), want, [](int a, double b) {
        return std::abs(a - std::lround(std::min(255.0, std::max(0.0, b)))) <= 3;
    });
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

template <class Exception = std::runtime_error>
std::string failure(unsigned int windowWidth, unsigned int w, unsigned int h) {
    return thrownText<Exception>([&] { Display(windowWidth, 1, w, h, false); });
}

void expectThatItWorks() {
    Shown display;
    EXPECT_TRUE(display.write(frame(PF_YCC444P)));
    expectOnScreen(user::geometry());
}

const std::string constructor = "[VideoOutputDisplay::VideoOutputDisplay]: ";

TEST(DisplayTest, RefusesFrameSizes) {
    const std::string even = constructor + "Width and height of must both be even!";
    const std::string zero = constructor + "Width and height must not be zero.";
    EXPECT_EQ(failure<std::logic_error>(320, 641, 480), even);
    EXPECT_EQ(failure<std::logic_error>(320, 640, 481), even);
    EXPECT_EQ(failure<std::logic_error>(320, 0, 480), zero);
    EXPECT_EQ(failure<std::logic_error>(320, 640, 0), zero);
    EXPECT_EQ(SDL_WasInit(SDL_INIT_VIDEO), 0u);
}

TEST(DisplayTest, ReportsWhatSdlCannotDoAndLeavesItInitialised) {
    const auto attempt = [&](unsigned int window, unsigned int w, unsigned int h, const std::string& text) {
        EXPECT_EQ(failure(window, w, h), constructor + text);
        EXPECT_NE(SDL_WasInit(SDL_INIT_VIDEO), 0u);
        SDL_Quit();
    };
    attempt(20000, 64, 48, "SDL_SetVideoMode failed: A scanline is too wide.");
    attempt(40000, 64, 48, "SDL_SetVideoMode failed: Window too large.");
    attempt(100, 2, 2000, "SDL_SetVideoMode failed: Window too large.");
    attempt(64, 70000, 70000, "SDL_CreateYUVOverlay failed: Frames too large.");
    attempt(64, 65000, 65000, "SDL_CreateYUVOverlay failed: Frames too large.");
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    attempt(64, 64, 48, "SDL_CreateYUVOverlay failed: Can't use YUV data on non 16/24/32 bit surfaces.");
    unsetenv("SDL_VIDEODRIVER");
    expectThatItWorks();
}

TEST(DisplayTest, WithoutAServerThereIsOneClearException) {
    const std::string server = std::getenv("DISPLAY");
    const std::string text = constructor + "Unable to init SDL: No available video device.\n";
    // SDL's terminal drivers would end the process where the terminal is unknown.
    const std::string terminal = std::getenv("TERM") ? std::getenv("TERM") : "";
    unsetenv("TERM");
    unsetenv("DISPLAY");
    EXPECT_EQ(failure(64, 64, 48), text);
    setenv("DISPLAY", ":12345", 1);
    EXPECT_EQ(failure(64, 64, 48), text);
    EXPECT_EQ(std::getenv("SDL_VIDEODRIVER"), nullptr);
    setenv("DISPLAY", server.c_str(), 1);
    setenv("TERM", terminal.c_str(), 1);
    expectThatItWorks();
}

TEST(DisplayTest, WindowHeightFollowsFromWidthAndAspect) {
    // window width, frame size, window size
    const unsigned int cases[][5] = {
        {320, 640, 480, 320, 240}, {100, 64, 48, 100, 75}, {0, 64, 48, 1, 1}, {1, 200, 2, 1, 1}, {33, 20, 14, 33, 23}};
    for (const auto& c : cases)
        for (const unsigned int ignored : {0u, 100u}) {
            Display display(c[0], ignored, c[1], c[2], false);
            user::takeWindow();
            EXPECT_EQ(user::geometry().width, c[3]);
            EXPECT_EQ(user::geometry().height, c[4]);
        }
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

TEST(DisplayTest, TheNextFrameIsShownAfterOneThatWasRefused) {
    Shown display;
    const std::pair<unsigned int, unsigned int> sizes[] = {{66, 48}, {64, 50}, {62, 46}, {66, 46}, {0, 0}};
    for (const auto& [w, h] : sizes)
        EXPECT_EQ(thrownText<std::logic_error>([&, w = w, h = h] { display.write(frame(PF_YCC444P, w, h)); }),
                  "[VideoOutputDisplay::write]: Frame does not fit the display.");
    for (int twice = 0; twice < 2; ++twice) // the overlay stays locked meanwhile
        EXPECT_EQ(thrownText<std::logic_error>([&] { display.write(frame(Ko::PF_RGB)); }),
                  "[convertIm]: Don't know how to convert from " + fmt2string(Ko::PF_RGB) + " to " +
                      fmt2string(PF_YCC420P) + ".");
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

TEST(DisplayTest, CaptionsAreBothSet) {
    char mine[] = "mine";
    char* before = mine;
    for (const std::string wanted : {"VideoOutputDisplay", "mine"}) {
        Shown display;
        EXPECT_EQ(user::titles(), wanted + "\n" + wanted + "\n");
        display.setCaption("clip.mp4, 3 of 9");
        EXPECT_TRUE(reaches(display, [] { return user::titles() == "clip.mp4, 3 of 9\nclip.mp4, 3 of 9\n"; }));
        std::swap(DEFAULT_CAPTION, before);
    }
}

TEST(DisplayTest, ResizingKeepsTheAspectRatio) {
    Shown display(320);
    const unsigned int cases[][4] = {{800, 100, 800, 600}, {200, 700, 200, 150}, {1, 300, 1, 1}, {640, 480, 640, 480}};
    for (const auto& c : cases) {
        user::resize(c[0], c[1]);
        EXPECT_TRUE(reaches(display, [&] { return user::geometry().height == c[3]; })) << c[0];
        EXPECT_EQ(user::geometry().width, c[2]);
    }
    display.write(frame(PF_YCC444P));
    expectOnScreen(user::geometry());
}

TEST(DisplayTest, FullScreenAndBack) {
    Shown display(192);
    const auto covers = [&](bool whole) {
        return reaches(display, [&] {
            display.write(frame(PF_YCC444P));
            const bool all = shows(user::screen(wholeScreen).back(), colorAt(63, 47));
            return whole ? all : !all && user::geometry().width == 192 && user::geometry().height == 144;
        });
    };
    EXPECT_TRUE(covers(false));
    user::key("f");
    EXPECT_TRUE(covers(true));
    expectOnScreen(wholeScreen);
    user::key("f");
    EXPECT_TRUE(covers(false));
    for (const bool on : {true, true, false}) { // a setter, not a switch
        display.toggleFullscreen(on);
        EXPECT_TRUE(covers(on));
    }
    display.setMode();
    EXPECT_TRUE(covers(false));
    expectOnScreen(user::geometry());
}

TEST(DisplayTest, StartsInFullScreen) {
    Display display(192, 1, frameWidth, frameHeight, true);
    display.write(frame(PF_YCC420P));
    expectOnScreen(wholeScreen);
    display.toggleFullscreen(false);
    display.write(frame(PF_YCC420P));
    user::takeWindow();
    EXPECT_EQ(user::geometry().height, 144u);
}

TEST(DisplayTest, KeysPauseStepAndResume) {
    const Image im = frame(PF_YCC444P);
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
        display.write(frame(PF_Y));
        EXPECT_FALSE(display.getQuit());
        for (int twice = 0; twice < 2; ++twice) {
            byKey ? user::key("q") : user::close();
            EXPECT_TRUE(reaches(display, [&] { return display.getQuit(); }));
        }
    }
}

TEST(DisplayTest, ALostWindowOrServerIsAnException) {
    const auto lost = [](void (*blow)(), const std::function<void(Display&)>& step) {
        const LeaksAllowed allowed;
        Shown display;
        display.write(frame(PF_YCC444P));
        blow();
        const std::string text = thrownText<std::runtime_error>([&] {
            for (int i = 0; i < 1000; ++i)
                step(display);
        });
        if (testing::Value(text, testing::EndsWith("Lost the connection to the X server."))) {
            // Whoever goes on all the same is told again.
            EXPECT_THROW(display.write(frame(PF_Y)), std::runtime_error);
            EXPECT_THROW(display.setCaption("x"), std::runtime_error);
            EXPECT_THROW(display.toggleFullscreen(true), std::runtime_error);
        }
        return text;
    };
    const auto write = [im = frame(PF_YCC444P)](Display& display) {
        display.write(im);
    };
    testing::internal::CaptureStderr(); // the destructor may have something to say as well
    EXPECT_THAT(lost(user::destroyWindow, write), testing::StartsWith("[VideoOutputDisplay::write]: X error: Bad"));
    EXPECT_THAT(lost(user::kill, write), testing::StartsWith("[VideoOutputDisplay::write]: "));
    EXPECT_EQ(lost(user::kill, [](Display& display) { display.videoPollEvents(); }),
              "[VideoOutputDisplay::videoPollEvents]: Lost the connection to the X server.");
    testing::internal::GetCapturedStderr();
    expectThatItWorks();
}

} // namespace
