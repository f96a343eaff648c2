// SPDX-License-Identifier: BSD-2-Clause
// capture [DEVICE] [WxH] [-n FRAMES] OUTPUT|--show: records a camera into a video file, or shows it in a window.
//
// Without arguments it lists the cameras. The rate is measured, since a camera does not tell what it delivers.

#include <Kovanta/Draw.h>
#include <Kovanta/Font.h>
#include <Kovanta/Timer.h>
#include <Kovanta/VideoInput.h>
#include <Kovanta/VideoOutput.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr Ko::YCCColor black{16, 128, 128};
constexpr Ko::YCCColor white{235, 128, 128};

volatile std::sig_atomic_t interrupted = 0;

void interrupt(int) {
    interrupted = 1;
}

struct Options {
    std::vector<std::string> words;
    unsigned int device = 0;
    unsigned int width = 640;
    unsigned int height = 480;
    std::string output;
    bool show = false;
    bool describe = false;
    unsigned long frames = 0;
    unsigned int rate = 0;
    unsigned int bitRate = 2000000;
};

/// The number that the text is, if it is one.
std::optional<unsigned int> number(const std::string& text) {
    unsigned int value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

/// A number is the device, two numbers with an x between them the size, and everything else the output.
void sortWords(Options& options) {
    for (const std::string& word : options.words) {
        const std::size_t x = word.find('x');
        const std::optional<unsigned int> first = number(word.substr(0, x));
        const std::optional<unsigned int> second = x == std::string::npos ? std::nullopt : number(word.substr(x + 1));
        if (first && x == std::string::npos) {
            options.device = *first;
        } else if (first && second) {
            options.width = *first;
            options.height = *second;
        } else if (options.output.empty()) {
            options.output = word;
        } else {
            throw std::runtime_error("two outputs: " + options.output + " and " + word);
        }
    }
    if (!options.describe && options.output.empty() != options.show)
        throw std::runtime_error("give either a file to write or --show");
}

void listDevices() {
    const std::vector<std::string> devices = Ko::VideoInputCaptureV4L().listDevs();
    for (std::size_t device = 0; device < devices.size(); ++device)
        if (devices[device] != "none")
            std::cout << device << ": " << devices[device] << "\n";
    if (devices.empty())
        std::cout << "No camera found.\n";
}

/// What the moments tell at which frames arrived.
class Pace {
public:
    /// Call when a frame has arrived.
    void tick() {
        if (running) {
            intervals.push_back(sinceLast.get());
            total += intervals.back();
        }
        running = true;
        sinceLast.start();
    }

    /// The next interval does not count.
    void pause() { running = false; }

    double framesPerSecond() const { return total > 0 ? 1e6 * static_cast<double>(intervals.size()) / total : 0; }

    /// A frame is missing wherever an interval is a multiple of the usual one.
    unsigned long dropped() const {
        if (intervals.empty())
            return 0;
        std::vector<unsigned int> sorted = intervals;
        std::nth_element(sorted.begin(), sorted.begin() + static_cast<long>(sorted.size() / 2), sorted.end());
        const double usual = std::max(sorted[sorted.size() / 2], 1u);
        unsigned long count = 0;
        for (const unsigned int interval : intervals)
            count += static_cast<unsigned long>(std::max(std::lround(interval / usual) - 1, 0L));
        return count;
    }

private:
    Ko::Timer sinceLast;
    std::vector<unsigned int> intervals; // microseconds
    double total = 0;                    // of them
    bool running = false;
};

/// Writes the number of the frame and the rate into the picture's lower left corner.
void drawLabel(Ko::Image<>& frame, const Ko::Font& font, const Pace& pace) {
    std::ostringstream text;
    text << "frame " << frame.sequenceNumber << std::fixed << std::setprecision(1) << "  " << pace.framesPerSecond()
         << "/s";
    const int bottom = static_cast<int>(frame.height) - 8;
    Ko::drawBbox(frame, {8, bottom - 20, 216, bottom}, black, true);
    font.drawText(frame, text.str(), {12, bottom - 6}, white);
}

/// A file whose rate is that of its first frames, which are held back until it is known.
class Recorder {
public:
    explicit Recorder(const Options& o)
        : options(o)
        , rate(o.rate) {
        sink.setThrowOnFailure(true);
    }

    void write(const Ko::Image<>& frame, const Pace& pace) {
        if (!sink.isOpened()) {
            held.push_back(frame);
            if (rate != 0 || held.size() > 10)
                open(pace);
            return;
        }
        sink.write(frame);
    }

    void finish(const Pace& pace) {
        if (!sink.isOpened() && !held.empty())
            open(pace);
        sink.close(); // what is still queued is encoded here
    }

private:
    void open(const Pace& pace) {
        if (rate == 0)
            rate = static_cast<unsigned int>(std::max(std::lround(pace.framesPerSecond()), 1L));
        sink.open(held.front().width, held.front().height, options.output, {rate, 1}, options.bitRate);
        for (const Ko::Image<>& frame : held)
            sink.write(frame);
        held.clear();
    }

    const Options& options;
    unsigned int rate;
    std::vector<Ko::Image<>> held;
    Ko::VideoOutputVideoFile sink;
};

/// @return whether the user wants to go on
bool show(Ko::VideoOutputDisplay& display, const Ko::Image<>& frame, Pace& pace) {
    display.write(frame);
    while (display.getPaused() && !display.getQuit() && !interrupted) {
        pace.pause();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        display.videoPollEvents();
    }
    return !display.getQuit();
}

void capture(const Options& options) {
    Ko::VideoInputCaptureV4L camera;
    camera.setBufferCount(4);
    camera.init(options.device, options.width, options.height, 0);
    if (options.describe) {
        camera.enumInputs();
        camera.enumFmts();
        return;
    }
    Ko::Font font;
    font.init(nullptr, 0, 14);
    Recorder recorder(options);
    std::unique_ptr<Ko::VideoOutputDisplay> display;
    if (options.show)
        display = std::make_unique<Ko::VideoOutputDisplay>(camera.getWidth(), 0, camera.getWidth(), camera.getHeight(),
                                                           false);
    Ko::Timer all, reading, drawing, writing;
    Pace pace;
    Ko::Image frame(Ko::PF_YCC444P);
    bool more = true;
    while (more && !interrupted && (options.frames == 0 || camera.tell() < static_cast<long>(options.frames))) {
        reading.start();
        camera.read(frame);
        reading.stop();
        pace.tick();
        drawing.start();
        drawLabel(frame, font, pace);
        drawing.stop();
        writing.start();
        if (display)
            more = show(*display, frame, pace);
        else
            recorder.write(frame, pace);
        writing.stop();
    }
    all.stop();
    recorder.finish(pace);
    std::cout << std::fixed << std::setprecision(2) << camera.tell() << " frames of " << camera.getWidth() << "x"
              << camera.getHeight() << " in " << all.getCum() / 1e6 << " s, " << pace.framesPerSecond() << " frames/s, "
              << pace.dropped() << " dropped\n";
    for (const auto& [name, timer] : {std::pair("read ", &reading), {"draw ", &drawing}, {"write", &writing}})
        std::cout << "  " << name << " " << timer->getCum() / 1e6 << " s\n";
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app{"capture [DEVICE] [WIDTHxHEIGHT] [-n FRAMES] OUTPUT|--show\n"
                 "Records a camera into a video file, or shows it in a window. Without arguments: lists the cameras."};
    app.add_option("WORDS", options.words,
                   "[DEVICE] its number, 0 by default; [WIDTHxHEIGHT] wished size, 640x480 by default; [OUTPUT] video "
                   "file to write, whose extension chooses the container");
    app.add_flag("--show", options.show, "Show a window instead: q quits, p pauses, space steps, f full screen");
    app.add_flag("--formats", options.describe, "List the inputs and pixel formats of the device instead");
    app.add_option("-n", options.frames, "Frames to capture; without end by default");
    app.add_option("--rate", options.rate, "Frames per second of the file; measured by default");
    app.add_option("--bitrate", options.bitRate, "Bits per second")->capture_default_str();
    CLI11_PARSE(app, argc, argv);

    std::signal(SIGINT, interrupt);
    std::signal(SIGTERM, interrupt);
    try {
        if (argc == 1) {
            listDevices();
            return 0;
        }
        sortWords(options);
        capture(options);
    } catch (const std::exception& e) {
        std::cerr << "capture: " << e.what() << "\n";
        return 1;
    }
    return 0;
}
