#include "Kovanta/VideoOutputDisplay.h"

#include "videoout/KnownLeaks.h"
#include "videoout/XClient.h"

#include <SDL.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>

/// Xlib loses a string of 13 bytes with every connection. Read by the leak checker, which defines it weakly.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libX11.so\n";
}

namespace {

using Image = Ko::Image<unsigned char>;
using Display = Ko::VideoOutputDisplay;

constexpr unsigned int frameWidth = 64;
constexpr unsigned int frameHeight = 48;

/// One connection that outlives every window: a server that loses its last client starts anew.
XClient& user() {
    static XClient client;
    return client;
}

struct Ycc {
    int y, cb, cr;
};

/// Four fields of strong, different colours, so that swapped planes, rows or columns show.
Ycc colorAt(unsigned int x, unsigned int y, unsigned int w = frameWidth, unsigned int h = frameHeight) {
    static const Ycc fields[2][2] = {{{90, 200, 100}, {130, 60, 190}}, {{180, 128, 60}, {60, 140, 150}}};
    return fields[y >= h / 2][x >= w / 2];
}

Image frame(Ko::PIXEL_FORMAT format, unsigned int w = frameWidth, unsigned int h = frameHeight) {
    Image im(format);
    im.size(w, h);
    for (int p = 0; p < 4; ++p)
        for (unsigned int y = 0; im.plane[p].rows && y < im.plane[p].height; ++y)
            for (unsigned int x = 0; x < im.plane[p].width; ++x) {
                const Ycc c = colorAt(x * im.horDiv[p], y * im.verDiv[p], w, h);
                im.plane[p].view[y][x] = static_cast<unsigned char>(p == 0 ? c.y : p == 1 ? c.cb : c.cr);
            }
    return im;
}

/// What an overlay that SDL draws itself makes of a sample: BT.601 with the luma left in its range.
XClient::Rgb shown(Ycc c) {
    const auto clamp = [](double v) {
        return static_cast<int>(std::lround(std::min(255.0, std::max(0.0, v))));
    };
    return {clamp(c.y + 1.402 * (c.cr - 128)), clamp(c.y - 0.714 * (c.cr - 128) - 0.344 * (c.cb - 128)),
            clamp(c.y + 1.772 * (c.cb - 128))};
}

/// Every pixel of the area is the frame's, stretched; those that a stretch may give to either field are left out.
void expectOnScreen(XClient::Geometry area, const std::function<Ycc(Ycc)>& conversion) {
    const auto pixels = user().screen(area);
    int wrong = 0;
    const auto distance = [](unsigned int a, unsigned int b) {
        return a > b ? a - b : b - a;
    };
    const unsigned int margin = area.width / frameWidth + area.height / frameHeight;
    for (unsigned int y = 0; y < area.height; ++y)
        for (unsigned int x = 0; x < area.width; ++x) {
            if (area.width != frameWidth &&
                (distance(x, area.width / 2) <= margin || distance(y, area.height / 2) <= margin))
                continue;
            const XClient::Rgb is = pixels[y * area.width + x];
            const XClient::Rgb want = shown(conversion(colorAt(x, y, area.width, area.height)));
            if (std::abs(is.r - want.r) > 3 || std::abs(is.g - want.g) > 3 || std::abs(is.b - want.b) > 3)
                if (++wrong == 1)
                    ADD_FAILURE() << x << "," << y << ": " << is.r << " " << is.g << " " << is.b << ", not " << want.r
                                  << " " << want.g << " " << want.b;
        }
    EXPECT_EQ(wrong, 0);
}

Ycc same(Ycc c) {
    return c;
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

template <class Exception, class Action>
void expectThrow(Action action, const std::string& text) {
    try {
        action();
        ADD_FAILURE() << "no exception, expected " << text;
    } catch (const Exception& e) {
        EXPECT_EQ(std::string(e.what()), text);
    }
}

class DisplayTest : public testing::Test {
protected:
    void SetUp() override { user(); }
};

TEST_F(DisplayTest, RefusesFrameSizes) {
    const std::string even = "[VideoOutputDisplay::VideoOutputDisplay]: Width and height of must both be even!";
    const std::string zero = "[VideoOutputDisplay::VideoOutputDisplay]: Width and height must not be zero.";
    expectThrow<std::logic_error>([] { Display(320, 240, 641, 480, false); }, even);
    expectThrow<std::logic_error>([] { Display(320, 240, 640, 481, false); }, even);
    expectThrow<std::logic_error>([] { Display(320, 240, 0, 480, false); }, zero);
    expectThrow<std::logic_error>([] { Display(320, 240, 640, 0, false); }, zero);
    EXPECT_EQ(SDL_WasInit(SDL_INIT_VIDEO), 0u);
}

TEST_F(DisplayTest, ReportsWhatSdlCannotDoAndLeavesItInitialised) {
    const std::string prefix = "[VideoOutputDisplay::VideoOutputDisplay]: ";
    const auto attempt = [&](unsigned int window, unsigned int w, unsigned int h, const std::string& text) {
        expectThrow<std::runtime_error>([&] { Display(window, 1, w, h, false); }, prefix + text);
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
    Display works(64, 48, 64, 48, false);
    EXPECT_TRUE(works.write(frame(Ko::PF_Y)));
}

TEST_F(DisplayTest, WithoutAServerThereIsOneClearException) {
    const std::string server = std::getenv("DISPLAY");
    const std::string text =
        "[VideoOutputDisplay::VideoOutputDisplay]: Unable to init SDL: No available video device.\n";
    // SDL's terminal drivers would end the process where the terminal is unknown.
    const std::string terminal = std::getenv("TERM") ? std::getenv("TERM") : "";
    unsetenv("TERM");
    unsetenv("DISPLAY");
    expectThrow<std::runtime_error>([] { Display(64, 48, 64, 48, false); }, text);
    setenv("DISPLAY", ":12345", 1);
    expectThrow<std::runtime_error>([] { Display(64, 48, 64, 48, false); }, text);
    EXPECT_EQ(std::getenv("SDL_VIDEODRIVER"), nullptr);
    setenv("DISPLAY", server.c_str(), 1);
    setenv("TERM", terminal.c_str(), 1);
    Display works(64, 48, 64, 48, false);
    EXPECT_TRUE(works.write(frame(Ko::PF_Y)));
}

TEST_F(DisplayTest, WindowHeightFollowsFromWidthAndAspect) {
    const unsigned int cases[][6] = {
        // window w, h, frame w, h, real w, h
        {320, 7, 640, 480, 320, 240}, {64, 48, 64, 48, 64, 48}, {100, 0, 64, 48, 100, 75},
        {0, 100, 64, 48, 1, 1},       {1, 1, 200, 2, 1, 1},     {33, 9, 20, 14, 33, 23},
    };
    for (const auto& c : cases) {
        Display display(c[0], c[1], c[2], c[3], false);
        user().takeWindow();
        EXPECT_EQ(user().geometry().width, c[4]);
        EXPECT_EQ(user().geometry().height, c[5]);
    }
}

TEST_F(DisplayTest, ShowsTheColoursOfEveryFormat) {
    const std::function<Ycc(Ycc)> grey = [](Ycc c) {
        return Ycc{c.y * 219 / 255 + 16, 128, 128};
    };
    for (const unsigned int scale : {1u, 2u, 5u})
        for (const auto format : {Ko::PF_YCC444P, Ko::PF_YCC420P, Ko::PF_Y}) {
            Display display(scale * frameWidth, 1, frameWidth, frameHeight, false);
            user().takeWindow();
            EXPECT_TRUE(display.write(frame(format)));
            SCOPED_TRACE(std::to_string(scale) + " " + fmt2string(format));
            ASSERT_EQ(user().geometry().height, scale * frameHeight);
            expectOnScreen(user().geometry(), format == Ko::PF_Y ? grey : same);
        }
}

TEST_F(DisplayTest, TheNextFrameIsShownAfterOneThatWasRefused) {
    Display display(frameWidth, 1, frameWidth, frameHeight, false);
    user().takeWindow();
    const std::string size = "[VideoOutputDisplay::write]: Frame does not fit the display.";
    const unsigned int refused[][2] = {{66, 48}, {64, 50}, {62, 46}, {66, 46}, {0, 0}};
    for (const auto& s : refused)
        expectThrow<std::logic_error>([&] { display.write(frame(Ko::PF_YCC444P, s[0], s[1])); }, size);
    expectThrow<std::logic_error>([&] { display.write(frame(Ko::PF_RGB)); },
                                  "[convertIm]: Don't know how to convert from " + fmt2string(Ko::PF_RGB) + " to " +
                                      fmt2string(Ko::PF_YCC420P) + ".");
    expectThrow<std::logic_error>([&] { display.write(frame(Ko::PF_RGB)); },
                                  "[convertIm]: Don't know how to convert from " + fmt2string(Ko::PF_RGB) + " to " +
                                      fmt2string(Ko::PF_YCC420P) + ".");
    EXPECT_TRUE(display.write(frame(Ko::PF_YCC444P)));
    expectOnScreen(user().geometry(), same);
}

TEST_F(DisplayTest, AFrameSmallerInOneDirectionCoversItsPart) {
    for (const auto format : {Ko::PF_YCC444P, Ko::PF_YCC420P, Ko::PF_Y}) {
        Display display(frameWidth, 1, frameWidth, frameHeight, false);
        user().takeWindow();
        Image flat(format);
        for (const auto& s : {std::pair<unsigned, unsigned>{64, 21}, {31, 48}, {64, 0}}) {
            flat.size(s.first, s.second);
            for (int p = 0; p < 3; ++p)
                for (unsigned y = 0; s.second != 0 && y < flat.plane[p].height; ++y)
                    std::fill_n(flat.plane[p].view[y], flat.plane[p].width,
                                static_cast<unsigned char>(p == 0 ? 200 : 128));
            EXPECT_TRUE(display.write(flat));
        }
        const auto pixels = user().screen(user().geometry());
        EXPECT_GT(pixels[0].g, 180);
        EXPECT_GT(pixels[40 * frameWidth + 10].g, 180);
        EXPECT_LT(pixels[40 * frameWidth + 50].g, 20) << "black where no frame has been";
    }
}

TEST_F(DisplayTest, CaptionsAreBothSet) {
    EXPECT_STREQ(DEFAULT_CAPTION, "VideoOutputDisplay");
    {
        Display display(64, 1, 64, 48, false);
        user().takeWindow();
        EXPECT_EQ(user().title(), "VideoOutputDisplay");
        EXPECT_EQ(user().iconTitle(), "VideoOutputDisplay");
        display.setCaption("clip.mp4, 3 of 9");
        EXPECT_TRUE(reaches(display, [] { return user().title() == "clip.mp4, 3 of 9"; }));
        EXPECT_EQ(user().iconTitle(), "clip.mp4, 3 of 9");
    }
    char* const before = DEFAULT_CAPTION;
    char mine[] = "mine";
    DEFAULT_CAPTION = mine;
    Display second(64, 1, 64, 48, false);
    DEFAULT_CAPTION = before;
    user().takeWindow();
    EXPECT_EQ(user().title(), "mine");
}

TEST_F(DisplayTest, ResizingKeepsTheAspectRatio) {
    Display display(320, 1, frameWidth, frameHeight, false);
    user().takeWindow();
    display.write(frame(Ko::PF_YCC444P));
    const unsigned int cases[][4] = {{800, 100, 800, 600}, {200, 700, 200, 150}, {1, 300, 1, 1}, {640, 480, 640, 480}};
    for (const auto& c : cases) {
        user().resize(c[0], c[1]);
        EXPECT_TRUE(reaches(display, [&] { return user().geometry().height == c[3]; })) << c[0];
        EXPECT_EQ(user().geometry().width, c[2]);
    }
    display.write(frame(Ko::PF_YCC444P));
    expectOnScreen(user().geometry(), same);
}

TEST_F(DisplayTest, FullScreenAndBack) {
    const XClient::Geometry all{0, 0, 1024, 768};
    Display display(192, 1, frameWidth, frameHeight, false);
    user().takeWindow();
    const auto covered = [&] {
        display.write(frame(Ko::PF_YCC444P));
        const auto pixels = user().screen(all);
        const auto c = shown(colorAt(63, 47));
        return std::abs(pixels.back().r - c.r) < 4 && std::abs(pixels.back().g - c.g) < 4;
    };
    const auto windowed = [&] {
        return !covered() && user().geometry().width == 192 && user().geometry().height == 144;
    };
    EXPECT_TRUE(reaches(display, windowed));
    user().key("f");
    EXPECT_TRUE(reaches(display, covered));
    expectOnScreen(all, same);
    user().key("f");
    EXPECT_TRUE(reaches(display, windowed));
    // A setter, not a switch.
    display.toggleFullscreen(true);
    EXPECT_TRUE(reaches(display, covered));
    display.toggleFullscreen(true);
    EXPECT_TRUE(reaches(display, covered));
    display.toggleFullscreen(false);
    EXPECT_TRUE(reaches(display, windowed));
    expectOnScreen(user().geometry(), same);
    display.setMode();
    EXPECT_TRUE(reaches(display, windowed));
}

TEST_F(DisplayTest, StartsInFullScreen) {
    Display display(192, 1, frameWidth, frameHeight, true);
    display.write(frame(Ko::PF_YCC420P));
    expectOnScreen({0, 0, 1024, 768}, same);
    display.toggleFullscreen(false);
    display.write(frame(Ko::PF_YCC420P));
    user().takeWindow();
    EXPECT_EQ(user().geometry().height, 144u);
}

TEST_F(DisplayTest, KeysPauseStepAndResume) {
    const Image im = frame(Ko::PF_YCC444P);
    for (const char* pause : {"p", "Pause"}) {
        Display display(64, 1, 64, 48, false);
        user().takeWindow();
        const auto paused = [&] {
            return display.getPaused();
        };
        const auto runs = [&] {
            return !display.getPaused();
        };
        // Key presses arrive in order: once a later one had its effect, an earlier one had none.
        EXPECT_FALSE(display.getPaused());
        user().key("space"); // nothing while running
        user().key("Escape");
        user().key("x");
        user().key(pause);
        EXPECT_TRUE(reaches(display, paused));
        for (int step = 0; step < 3; ++step) {
            user().key("space");
            EXPECT_TRUE(reaches(display, runs));
            display.write(im);
            EXPECT_TRUE(display.getPaused());
        }
        user().key(pause);
        EXPECT_TRUE(reaches(display, runs));
        display.write(im);
        EXPECT_FALSE(display.getPaused());

        // The application's own pause: the key then turns to single steps.
        display.setPaused(true);
        display.write(im);
        EXPECT_TRUE(display.getPaused());
        user().key(pause);
        EXPECT_TRUE(reaches(display, runs));
        display.write(im);
        EXPECT_TRUE(display.getPaused());
        user().key(pause);
        EXPECT_TRUE(reaches(display, runs));
        display.write(im);
        EXPECT_FALSE(display.getPaused());
        EXPECT_FALSE(display.getQuit());
    }
}

TEST_F(DisplayTest, QuitsByKeyByClosingAndBySignal) {
    const std::function<void()> ways[] = {[] { user().key("q"); },
                                          [] {
                                              user().close();
                                          }};
    for (const auto& way : ways) {
        Display display(64, 1, 64, 48, false);
        user().takeWindow();
        display.write(frame(Ko::PF_Y));
        EXPECT_FALSE(display.getQuit());
        way();
        EXPECT_TRUE(reaches(display, [&] { return display.getQuit(); }));
        way();
        display.write(frame(Ko::PF_Y));
        EXPECT_TRUE(display.getQuit());
    }
}

TEST_F(DisplayTest, ALostWindowOrServerIsAnException) {
    const Image im = frame(Ko::PF_YCC444P);
    const std::string cut = "[VideoOutputDisplay::videoPollEvents]: Lost the connection to the X server.";
    const auto failure = [&](void (XClient::*blow)(), const std::function<void(Display&)>& step) {
        const LeaksAllowed allowed;
        Display display(64, 1, 64, 48, false);
        user().takeWindow();
        display.write(im);
        (user().*blow)();
        try {
            for (int i = 0; i < 1000; ++i)
                step(display);
        } catch (const std::runtime_error& e) {
            // Whoever goes on all the same is told again.
            const std::function<void()> others[] = {[&] { display.write(im); }, [&] { display.setCaption("x"); },
                                                    [&] {
                                                        display.toggleFullscreen(true);
                                                    }};
            for (const auto& other : others) {
                if (e.what() == cut)
                    EXPECT_THROW(other(), std::runtime_error);
            }
            return std::string(e.what());
        }
        return std::string();
    };
    const auto write = [&](Display& display) {
        display.write(im);
    };
    const auto poll = [](Display& display) {
        display.videoPollEvents();
    };
    testing::internal::CaptureStderr(); // the destructor may have something to say as well
    const std::string destroyed = failure(&XClient::destroyWindow, write);
    const std::string killed = failure(&XClient::kill, write);
    const std::string cutOff = failure(&XClient::kill, poll);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(destroyed.find("[VideoOutputDisplay::write]: X error: Bad"), 0u) << destroyed;
    EXPECT_EQ(killed.find("[VideoOutputDisplay::write]: "), 0u) << killed;
    EXPECT_EQ(cutOff, cut);

    Display display(64, 1, 64, 48, false);
    user().takeWindow();
    display.write(im);
    expectOnScreen(user().geometry(), same);
}

} // namespace
