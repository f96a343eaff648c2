// SPDX-License-Identifier: BSD-2-Clause
// play INPUT...: shows video files, stills and directories of stills in a window, one after the other, at their rate.

#include "play/Source.h"
#include "support/EvenFrame.h"
#include "support/Label.h"
#include "support/Program.h"
#include "support/Rate.h"
#include "support/Stop.h"

#include <Kovanta/VideoOutput.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* keys = R"(Keys:
  q             quit
  p, Pause      hold, and go on
  space         the next frame while holding
  f             full screen, and back
  left, right   five seconds back or on, at least a frame
  down, up      a minute back or on
  +, -          faster, slower)";

struct Options {
    std::vector<std::string> inputs;
    bool loop = false;
    bool overlay = false;
    bool hold = false;
    bool fullscreen = false;
    unsigned int width = 0;
    example::Rate rate{0, 1};
};

/// One window for all frames, whatever their sizes.
class Player {
public:
    explicit Player(const Options& chosen)
        : options(chosen) {}

    /// @return whether the user wants to see more
    bool play(Source& source);
    /// Leaves the last frame there until the user goes.
    void hold();
    /// How many were shown until now.
    unsigned long frames() const { return count; }

private:
    bool ended() const { return example::stopAsked() || (display && display->getQuit()); }
    Clock::duration period() const;
    bool isTooHigh(unsigned int width, unsigned int height) const;
    void openWindow(unsigned int width, unsigned int height);
    void resizeWindow(unsigned int width, unsigned int height);
    void show();
    void tell();
    void poll();
    void wait();

    const Options& options;
    std::optional<Ko::VideoOutputDisplay> display;
    Ko::Image<> frame{Ko::PF_YCC444P};
    Ko::Image<> room{Ko::PF_YCC444P};
    example::Label label;
    std::string title;
    std::string position;
    double rate = 25;    // frames per second
    double pace = 1;     // by which the user multiplies it
    double jump = 0;     // seconds that the user wants to go on, or back
    bool sought = false; // the next frame is shown at once, also while holding
    unsigned long count = 0;
    Clock::time_point shown;
};

/// "frame 12, 0:00.44"
std::string positionText(long number, double rate) {
    const double seconds = static_cast<double>(number - 1) / rate;
    const long minutes = static_cast<long>(seconds / 60);
    char text[80];
    std::snprintf(text, sizeof text, "frame %ld, %ld:%05.2f", number, minutes,
                  seconds - 60 * static_cast<double>(minutes));
    return text;
}

bool Player::play(Source& source) {
    title = source.title();
    rate = options.rate.num != 0 ? example::perSecond(options.rate) : source.rate();
    for (;;) {
        const bool delivered = source.read(frame);
        if (!sought || !delivered)
            wait(); // as long as the frame before is to be seen
        if (ended())
            return false;
        if (jump > 0 && !delivered) { // there is nothing further on
            jump = 0;
            sought = true;
            return true;
        }
        if (jump != 0) {
            const double frames = std::round(jump * rate);
            const auto further = static_cast<long>(jump > 0 ? std::max(frames, 1.0) : std::min(frames, -1.0));
            try {
                source.jump(delivered ? further - 1 : further); // the frame after the shown one was read already
            } catch (const std::runtime_error&) {               // a stream that cannot be sought plays on
            }
            jump = 0;
            sought = true;
        } else if (!delivered) {
            return true;
        } else {
            sought = false;
            position = positionText(source.number(), rate);
            if (options.overlay)
                label.draw(frame, position);
            show();
        }
    }
}

Clock::duration Player::period() const {
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(1 / (rate * pace)));
}

/// Whether the window of the wished width would be higher than any server takes.
bool Player::isTooHigh(unsigned int width, unsigned int height) const {
    return options.width != 0 && static_cast<double>(height) * options.width / width > 32767;
}

void Player::openWindow(unsigned int width, unsigned int height) {
    constexpr unsigned int least = 320; // that the next frame, whose size may be another, can be seen as well
    const bool narrow = width < least && height / 16 <= width; // what is much higher than wide is fitted at once
    if (options.width == 0 && !narrow) {
        display.emplace(width, height, options.fullscreen); // no larger than the screen
    } else {
        const bool high = isTooHigh(width, height);
        display.emplace(options.width == 0 ? least : options.width, 0, high ? 32 : width, high ? 2 : height,
                        options.fullscreen);
        resizeWindow(width, height);
    }
    display->setKeepAspect(true);
}

void Player::resizeWindow(unsigned int width, unsigned int height) {
    const bool fit = options.width == 0 || isTooHigh(width, height);
    if (fit)
        display->setFitScreen(true);
    display->setFrameSize(width, height);
    if (!fit)
        display->setFitScreen(false);
}

void Player::show() {
    const Ko::ConstImage even = example::evenFrame(frame, room);
    if (display)
        resizeWindow(even->width, even->height);
    else
        openWindow(even->width, even->height);
    display->write(even);
    ++count;
    const Clock::time_point now = Clock::now();
    const Clock::time_point due = shown + period();
    shown = now >= due && now - due < period() ? due : now; // what is later than that is not caught up with
    tell();
}

/// The caption says where the show is.
void Player::tell() {
    char speed[40];
    std::snprintf(speed, sizeof speed, "%.4g frames/s", rate * pace);
    display->setCaption(title + " - " + position + ", " + (display->getPaused() ? "paused" : speed));
}

void Player::poll() {
    const bool paused = display->getPaused();
    const double before = pace;
    display->videoPollEvents();
    for (std::string key = display->takeKey(); !key.empty(); key = display->takeKey()) {
        if (key == "left" || key == "right")
            jump += key == "right" ? 5 : -5;
        else if (key == "down" || key == "up")
            jump += key == "up" ? 60 : -60;
        else if (key == "+" || key == "=" || key == "[+]") // = is + without shift
            pace = std::min(pace * 1.25, 32.0);
        else if (key == "-" || key == "[-]")
            pace = std::max(pace / 1.25, 1.0 / 32);
    }
    if (display->getPaused() != paused || pace != before)
        tell();
}

/// In slices, in which the user is heard.
void Player::wait() {
    while (display && !ended() && jump == 0) {
        const Clock::time_point now = Clock::now();
        const bool held = display->getPaused();
        if (!held && (display->getStepMode() || now >= shown + period()))
            return;
        const Clock::time_point slice = now + std::chrono::milliseconds(10);
        std::this_thread::sleep_until(held ? slice : std::min(slice, shown + period()));
        poll();
    }
}

void Player::hold() {
    while (display && !ended()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        poll();
    }
}

void playAll(const Options& options) {
    example::catchStops();
    Player player(options);
    bool single = options.inputs.size() == 1;
    unsigned long before = 0;
    do {
        before = player.frames();
        for (const std::string& input : options.inputs) {
            Source source(input);
            single = single && source.isSingle();
            if (!player.play(source))
                return;
        }
        if (player.frames() == before)
            throw std::runtime_error(options.inputs.size() == 1 ? options.inputs.front() + " holds no frame."
                                                                : "None of the inputs holds a frame.");
    } while (options.loop);
    if (options.hold || single) // there would be nothing to see
        player.hold();
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    example::Program program(
        argc, argv, "Shows video files, stills and directories of stills in a window, one after the other.", keys);
    program.add_option("INPUT", options.inputs, "Video file, still or directory of stills")->required();
    program.add_flag("--loop", options.loop, "Start again at the end");
    program.add_flag("--overlay", options.overlay, "Draw the position into the picture");
    program.add_flag("--hold", options.hold, "Keep the last frame until q is pressed, as for a single still");
    program.add_flag("--fullscreen", options.fullscreen, "Start in full screen");
    program
        .add_option("--width", options.width,
                    "Width of the window in pixels; the frames' own when left out, as far as the screen has it")
        ->type_name("N")
        ->check(example::wholeNumber(1, 16384));
    example::addRate(program, options.rate,
                     "Frames per second; when left out the file's own, 25 for a directory, one in three seconds for a "
                     "still");
    return program.run([&] { playAll(options); });
}
