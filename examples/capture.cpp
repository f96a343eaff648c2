// SPDX-License-Identifier: BSD-2-Clause
// capture [DEVICE] [WxH] [-n FRAMES] [OUTPUT] [--show]: records a camera into a video file, shows it in a window, or
// both.
//
// Without arguments it lists the cameras. What is lost and how fast frames come is told by the driver's numbers and
// time stamps, not by when the program got around to reading them.

#include "capture/Devices.h"
#include "capture/Recorder.h"
#include "support/EvenFrame.h"
#include "support/Label.h"
#include "support/Output.h"
#include "support/Program.h"
#include "support/Progress.h"
#include "support/Rate.h"
#include "support/Stop.h"

#include <Kovanta/Timer.h>
#include <Kovanta/VideoInput.h>
#include <Kovanta/VideoOutput.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <iomanip>
#include <iostream>
#include <limits>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

struct Options {
    std::vector<std::string> words;
    unsigned int device = 0;
    unsigned int width = 640;
    unsigned int height = 480;
    std::string output;
    bool show = false;
    bool describe = false;
    bool force = false;
    bool emulated = false;
    unsigned long frames = 0;
    example::Rate rate{0, 1};
    example::Rate cameraRate{0, 1};
    unsigned int bitRate = 2000000;
};

/// A number or a device is the device, two numbers with an x between them the size, and everything else the output.
/// @param lists whether there is nothing on the command line
void sortWords(Options& options, bool lists) {
    for (const std::string& word : options.words) {
        unsigned int width = 0;
        unsigned int height = 0;
        char rest = 0;
        if (const std::optional<unsigned int> device = deviceNumber(word)) {
            options.device = *device;
        } else if (std::sscanf(word.c_str(), "%5ux%5u%c", &width, &height, &rest) == 2 && width > 0 && height > 0) {
            options.width = width;
            options.height = height;
        } else if (!options.output.empty()) {
            throw CLI::ValidationError("There are two outputs: " + options.output + " and " + word);
        } else if (const std::string reason = example::fileName()(options.output = word); !reason.empty()) {
            throw CLI::ValidationError(reason + " Cameras are /dev/video0 or just 0, sizes 640x480.");
        }
    }
    if (!lists && !options.describe && options.output.empty() && !options.show)
        throw CLI::ValidationError("Give a file to write, or --show.");
}

/// What the driver says of the frames that came: how fast they did.
class Pace {
public:
    void tick(const Ko::VideoInputCaptureV4L& camera) {
        const Frame now{camera.getTimeStamp(), ++taken + camera.getLostFrames()};
        if (!first)
            first = now;
        last = now;
    }

    /// @return 0 as long as it is not known
    double framesPerSecond() const {
        if (!first || last.microseconds <= first->microseconds)
            return 0;
        return 1e6 * static_cast<double>(last.number - first->number) /
               static_cast<double>(last.microseconds - first->microseconds);
    }

    double seconds() const { return first ? static_cast<double>(last.microseconds - first->microseconds) / 1e6 : 0; }

private:
    struct Frame {
        std::int64_t microseconds;
        std::uint64_t number; // counts what was lost too
    };
    std::uint64_t taken = 0;
    std::optional<Frame> first;
    Frame last{};
};

class Capture {
public:
    explicit Capture(const Options& options);
    void run();

private:
    bool wanted() const;
    void wait();
    void take();
    void report() const;

    const Options& options;
    Ko::VideoInputCaptureV4L camera;
    std::optional<Recorder> recorder;
    std::optional<Ko::VideoOutputDisplay> display;
    example::Progress progress;
    example::Label label;
    Pace pace;
    Ko::Image<> frame{Ko::PF_YCC444P};
    Ko::Image<> room{Ko::PF_YCC444P};
    unsigned long taken = 0;
    mutable Ko::Timer reading, drawing, writing;
};

Capture::Capture(const Options& chosen)
    : options(chosen) {
    camera.setBufferCount(8); // an encoder takes its time to open
    camera.setFrameRate(options.cameraRate);
    camera.setEmulatedFormats(options.emulated);
    // Before the camera streams: a window takes longer to open than its buffers hold frames for.
    if (options.show)
        display.emplace(example::evenSize(options.width), example::evenSize(options.height), false);
    try {
        camera.init(options.device, options.width, options.height, 0);
    } catch (const std::runtime_error& e) {
        const std::string formats = options.emulated ? "" : otherFormats(options.device);
        if (formats.empty())
            throw;
        throw std::runtime_error(std::string(e.what()) + "\nIt offers " + formats + ": try --emulated.");
    }
    if (display)
        display->setFrameSize(example::evenSize(camera.getWidth()), example::evenSize(camera.getHeight()));
    if (!options.output.empty())
        recorder.emplace(camera.getWidth(), camera.getHeight(), options.output, options.rate, camera.getFrameRate(),
                         options.bitRate);
}

void Capture::run() {
    std::exception_ptr failure;
    try {
        while (wanted()) {
            wait();
            if (wanted())
                take();
        }
    } catch (...) { // an unplugged camera, say: what came before is kept
        failure = std::current_exception();
    }
    progress.clear();
    writing.start();
    if (recorder)
        recorder->finish(pace.framesPerSecond());
    writing.stop();
    report();
    if (failure)
        std::rethrow_exception(failure);
}

bool Capture::wanted() const {
    return !example::stopAsked() && !(display && display->getQuit()) && (options.frames == 0 || taken < options.frames);
}

/// A camera may fall silent; the user is heard all the same.
void Capture::wait() {
    reading.start();
    for (unsigned int slices = 0; wanted() && !camera.waitForFrame(50); ++slices) {
        if (display)
            display->videoPollEvents();
        if (slices >= 40 && progress.due())
            progress.show("nothing from the camera for " + std::to_string(slices / 20) + " s");
    }
    reading.stop();
}

void Capture::take() {
    reading.start();
    camera.read(frame);
    reading.stop();
    pace.tick(camera);
    if (display) {
        display->videoPollEvents();
        if (display->getPaused()) // nothing is lost by the driver meanwhile, nor recorded
            return;
    }
    std::ostringstream text;
    text << "frame " << taken << std::fixed << std::setprecision(1) << "  " << pace.framesPerSecond() << "/s";
    drawing.start();
    label.draw(frame, text.str());
    drawing.stop();
    writing.start();
    if (recorder)
        recorder->write(frame, pace.framesPerSecond());
    if (display)
        display->write(example::evenFrame(frame, room));
    writing.stop();
    ++taken;
    if (progress.due())
        progress.show(text.str() + ", " + std::to_string(camera.getLostFrames()) + " lost");
}

void Capture::report() const {
    std::cout << std::fixed << std::setprecision(2) << taken << " frames of " << camera.getWidth() << "x"
              << camera.getHeight() << " in " << pace.seconds() << " s, " << pace.framesPerSecond() << " frames/s, "
              << camera.getLostFrames() << " dropped\n";
    for (const auto& [name, timer] : {std::pair("read ", &reading), {"draw ", &drawing}, {"write", &writing}})
        std::cout << "  " << name << " " << timer->getCum() / 1e6 << " s\n";
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    example::Program program(argc, argv,
                             "Records a camera into a video file, shows it in a window, or both. Without arguments: "
                             "lists the cameras.",
                             "Keys in the window: q quits, p holds, space takes one frame while holding, f is full "
                             "screen.");
    program.add_option("WORD", options.words,
                       "DEVICE, as 0 or /dev/video0, 0 by default; WIDTHxHEIGHT, the wished size, 640x480 by default; "
                       "OUTPUT, the video file to write, whose extension chooses the container");
    program.add_flag("--show", options.show, "Show a window");
    program.add_flag("--formats", options.describe, "List what the device offers instead");
    program.add_flag("--emulated", options.emulated,
                     "Let libv4l2 decode what the camera compresses or packs in a way of its own: for cameras that "
                     "are refused otherwise, and for large pictures at full speed");
    program.add_option("-n", options.frames, "Frames to capture; without end by default")
        ->type_name("N")
        ->check(example::wholeNumber(1));
    example::addRate(program, options.rate, "Frames per second of the file; as the camera delivers by default");
    example::addRate(program, options.cameraRate, "Frames per second to ask the camera for", "--camera-rate");
    program.add_option("--bitrate", options.bitRate, "Bits per second")
        ->type_name("N")
        ->check(example::wholeNumber(1))
        ->capture_default_str();
    example::addForce(program, options.force);
    program.callback([&] { sortWords(options, argc == 1); });
    return program.run([&] {
        if (argc == 1) {
            listDevices();
        } else if (options.describe) {
            listFormats(options.device);
        } else {
            // Before signals are caught, so that Ctrl-C ends the question.
            if (!options.output.empty())
                example::requireReplaceable(options.output, options.force);
            example::catchStops();
            Capture(options).run();
        }
    });
}
