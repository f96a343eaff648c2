// SPDX-License-Identifier: BSD-2-Clause
// play FILE|DIRECTORY: shows a video file, or the stills of a directory, in a window at their rate.
//
// Keys: q quits, f is full screen and back, p or Pause holds, space steps to the next frame while holding.

#include <Kovanta/Draw.h>
#include <Kovanta/Font.h>
#include <Kovanta/VideoInput.h>
#include <Kovanta/VideoOutput.h>
#include <Kovanta/Wrap.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace {

struct Options {
    std::string input;
    bool loop = false;
    bool overlay = false;
    bool hold = false;
    bool fullscreen = false;
    unsigned int width = 0;
    double rate = 0;
};

/// Either kind of source, with the number of the frame that came last, counted from 1 since the beginning.
class Source {
public:
    explicit Source(const Options& options)
        : loop(options.loop) {
        if (std::filesystem::is_directory(options.input)) {
            stills = std::make_unique<Ko::VideoInputImageFile>(options.input);
            stills->seek(0, Ko::VP_BEGIN); // a single still counts as read already until a seek
            framesPerSecond = 25;
        } else {
            auto file = std::make_unique<Ko::VideoInputVideoFile>(options.input);
            file->setLoop(loop);
            const Ko::Frac<unsigned int> told = file->getFrameRate();
            framesPerSecond = told.num == 0 || told.den == 0 ? 25 : static_cast<double>(told.num) / told.den;
            video = std::move(file);
        }
        if (options.rate > 0)
            framesPerSecond = options.rate;
    }

    bool read(Ko::Image<>& frame) {
        Ko::VideoInput& input = video ? *video : *stills;
        const long before = input.tell();
        if (!input.read(frame)) {
            if (video || !loop) // a video file starts again by itself
                return false;
            stills->seek(0, Ko::VP_BEGIN);
            frameNumber = 0;
            return read(frame);
        }
        const long after = input.tell();
        const bool anew = before == 0 || (after < before && after != 0);
        frameNumber = anew ? 1 : frameNumber + 1;
        return true;
    }

    unsigned long number() const { return frameNumber; }
    double rate() const { return framesPerSecond; }

    std::string position() const {
        const double seconds = static_cast<double>(frameNumber - 1) / framesPerSecond;
        char text[80];
        std::snprintf(text, sizeof text, "frame %lu, %d:%05.2f", frameNumber, static_cast<int>(seconds / 60),
                      seconds - 60 * static_cast<int>(seconds / 60));
        return text;
    }

private:
    bool loop;
    std::unique_ptr<Ko::VideoInput> video;
    std::unique_ptr<Ko::VideoInput> stills;
    unsigned long frameNumber = 0;
    double framesPerSecond = 0;
};

/// White text on a dark field in the lower left corner, at a size that suits the frame.
class Label {
public:
    void draw(Ko::Image<>& frame, const std::string& text) {
        const unsigned int wanted = std::clamp(frame.height / 18, 9u, 48u);
        if (wanted != size) {
            font.init(nullptr, 0, wanted);
            size = wanted;
        }
        const int unit = static_cast<int>(size);
        const int bottom = static_cast<int>(frame.height) - unit / 2;
        const int width = static_cast<int>(text.size()) * ((6 * unit + 5) / 10) + unit; // 0.6 of the size a letter
        Ko::drawBbox(frame, {unit / 2, bottom - unit * 3 / 2, unit / 2 + width, bottom}, {40, 128, 128}, true);
        font.drawText(frame, text, {unit, bottom - unit / 2}, {235, 128, 128});
    }

private:
    Ko::Font font;
    unsigned int size = 0;
};

/// The window, opened anew when the size of the frames changes.
class Screen {
public:
    Screen(const Options& chosen)
        : options(chosen) {}

    Ko::VideoOutputDisplay& show(const Ko::Image<>& frame, const std::string& caption) {
        // A window takes even sizes. What is odd loses its last column or row: a wrapping of the rest costs nothing.
        const Ko::ConstImage even = Ko::wrapRectangle(frame, 0, 0, frame.width & ~1u, frame.height & ~1u);
        if (!display || even->width != width || even->height != height) {
            display.reset(); // one window at a time
            width = even->width;
            height = even->height;
            display.emplace(options.width != 0 ? options.width : width, 0, width, height, options.fullscreen);
        }
        display->setCaption(caption);
        display->write(even);
        return *display;
    }

private:
    const Options& options;
    std::optional<Ko::VideoOutputDisplay> display;
    unsigned int width = 0;
    unsigned int height = 0;
};

void play(const Options& options) {
    using Clock = std::chrono::steady_clock;
    const auto blink = std::chrono::milliseconds(10);
    Source source(options);
    Screen screen(options);
    Label label;
    const std::string name = std::filesystem::path(options.input).filename().string();
    char rate[40];
    std::snprintf(rate, sizeof rate, "%.4g frames/s", source.rate());
    const auto period = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(1 / source.rate()));

    Ko::Image frame(Ko::PF_YCC444P);
    Ko::VideoOutputDisplay* display = nullptr;
    auto due = Clock::now();
    while (source.read(frame)) {
        if (options.overlay)
            label.draw(frame, source.position());
        std::this_thread::sleep_until(due);
        display = &screen.show(frame, name + " - " + source.position() + ", " + rate);
        if (display->getPaused())
            display->setCaption(name + " - " + source.position() + ", paused");
        while (display->getPaused() && !display->getQuit()) {
            std::this_thread::sleep_for(blink);
            display->videoPollEvents();
        }
        if (display->getQuit())
            return;
        due = std::max(due + period, Clock::now()); // what is late is not caught up with
    }
    while (options.hold && display && !display->getQuit()) {
        std::this_thread::sleep_for(blink);
        display->videoPollEvents();
    }
    std::this_thread::sleep_until(due);
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app{"Shows a video file, or the stills of a directory, in a window. Keys: q quits, f is full screen, p or "
                 "Pause holds, space steps while holding."};
    app.add_option("INPUT", options.input, "Video file, or directory of stills")->required();
    app.add_flag("--loop", options.loop, "Start again at the end");
    app.add_flag("--overlay", options.overlay, "Draw the position into the picture");
    app.add_flag("--hold", options.hold, "Keep the last frame until q is pressed");
    app.add_flag("--fullscreen", options.fullscreen, "Start in full screen");
    app.add_option("--width", options.width, "Width of the window in pixels; the frames' own when left out")
        ->check(CLI::PositiveNumber);
    app.add_option("--rate", options.rate, "Frames per second; the file's own, or 25, when left out")
        ->check(CLI::Range(0.01, 1000.0));
    CLI11_PARSE(app, argc, argv);
    try {
        play(options);
    } catch (const std::exception& e) {
        std::cerr << "play: " << e.what() << "\n";
        return 1;
    }
    return 0;
}
