// SPDX-License-Identifier: BSD-2-Clause
// track INPUT OUTPUT: finds what moves in a video and draws it into the output.
//
// The whole road of a vision program: frames come out of one video file, are looked at and drawn into, and go into
// another.

#include "support/Output.h"
#include "support/Program.h"
#include "support/Progress.h"
#include "support/Stop.h"
#include "support/Upright.h"

#include <Kovanta/Draw.h>
#include <Kovanta/Font.h>
#include <Kovanta/Timer.h>
#include <Kovanta/VideoInput.h>
#include <Kovanta/VideoOutput.h>

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <exception>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace {

constexpr Ko::YCCColor green{173, 42, 26};
constexpr Ko::YCCColor red{82, 90, 240};
constexpr Ko::YCCColor yellow{210, 16, 146};
constexpr Ko::YCCColor white{235, 128, 128};
constexpr int fontSize = 14; // pixels

/// Finds the box around everything that moved just now.
///
/// The picture is cut into blocks of 8 x 8 pixels. Where the mean brightness of a block differs from that of the frame
/// before by more than a threshold, something moved, and the block stays warm for some frames: a smooth surface shows
/// its motion only now and then. A warm block alone is noise: it counts when two of its neighbours are warm too.
class MotionFinder {
public:
    std::optional<Ko::Bbox<int>> find(const Ko::Image<>& frame) {
        columns = static_cast<int>(frame.width) / blockSize;
        rows = static_cast<int>(frame.height) / blockSize;
        std::vector<int> current(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < columns; ++x)
                current[at(x, y)] = meanLuma(frame, x * blockSize, y * blockSize);
        previous.swap(current);
        if (current.size() != previous.size()) { // the first frame, or a new size
            warmth.assign(previous.size(), 0);
            return std::nullopt;
        }

        for (std::size_t i = 0; i < warmth.size(); ++i)
            warmth[i] = std::abs(previous[i] - current[i]) > threshold ? warmFrames : std::max(warmth[i] - 1, 0);
        std::optional<Ko::Bbox<int>> box;
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < columns; ++x)
                if (warmth[at(x, y)] > 0 && warmNeighbours(x, y) > 1)
                    include(box, x, y);
        return box;
    }

private:
    static constexpr int blockSize = 8;
    static constexpr int threshold = 6; // levels of brightness: above the noise of a camera, below a faint shadow
    static constexpr int warmFrames = 5;

    std::size_t at(int x, int y) const { return static_cast<std::size_t>(y * columns + x); }

    static int meanLuma(const Ko::Image<>& frame, int left, int top) {
        int sum = 0;
        for (int y = top; y < top + blockSize; ++y)
            for (int x = left; x < left + blockSize; ++x)
                sum += frame.plane[0].view[y][x];
        return sum / (blockSize * blockSize);
    }

    int warmNeighbours(int x, int y) const {
        int count = 0;
        for (int ny = std::max(y - 1, 0); ny <= std::min(y + 1, rows - 1); ++ny)
            for (int nx = std::max(x - 1, 0); nx <= std::min(x + 1, columns - 1); ++nx)
                count += (nx != x || ny != y) && warmth[at(nx, ny)] > 0;
        return count;
    }

    static void include(std::optional<Ko::Bbox<int>>& box, int x, int y) {
        const Ko::Bbox<int> block{x * blockSize, y * blockSize, (x + 1) * blockSize - 1, (y + 1) * blockSize - 1};
        if (!box)
            box = block;
        *box = {std::min(box->left, block.left), std::min(box->top, block.top), std::max(box->right, block.right),
                std::max(box->bottom, block.bottom)};
    }

    int columns = 0;
    int rows = 0;
    std::vector<int> previous; // mean brightness of each block
    std::vector<int> warmth;   // frames for which each block still counts as moving
};

/// Smooths the box over time, so that it glides, and remembers where its centre has been.
class Track {
public:
    void update(const std::optional<Ko::Bbox<int>>& found) {
        framesSinceFound = found ? 0 : framesSinceFound + 1;
        if (framesSinceFound > patience)
            path.clear();
        if (!found)
            return;
        const float share = path.empty() ? 1.0f : quickness;
        glide(box.left, found->left, share);
        glide(box.top, found->top, share);
        glide(box.right, found->right, share);
        glide(box.bottom, found->bottom, share);
        path.push_back({static_cast<int>(box.left + box.right) / 2, static_cast<int>(box.top + box.bottom) / 2});
        if (path.size() > pathLength)
            path.pop_front();
    }

    void draw(Ko::Image<>& frame, const Ko::Font& font) const {
        for (std::size_t i = 1; i < path.size(); ++i)
            Ko::drawLine(frame, path[i - 1], path[i], yellow);
        if (path.empty())
            return;
        for (const int thickness : {0, 1})
            Ko::drawBbox(frame,
                         {static_cast<int>(box.left) - thickness, static_cast<int>(box.top) - thickness,
                          static_cast<int>(box.right) + thickness, static_cast<int>(box.bottom) + thickness},
                         green, false);
        const Ko::Point<int> corner{static_cast<int>(box.left), static_cast<int>(box.top) - 4};
        font.drawText(frame, "moving", {corner.x, std::max(corner.y, fontSize)}, green);
        // The way of the last frames, longer than it was, to be seen.
        const Ko::Point<int> from = path[path.size() - std::min<std::size_t>(path.size(), 6)];
        const Ko::Point<int> to = path.back();
        Ko::drawVector2D(frame, Ko::Vector2D<int>{2 * (to.x - from.x), 2 * (to.y - from.y)}, to, 6, red);
    }

private:
    static constexpr int patience = 15;           // frames without motion until the box goes
    static constexpr std::size_t pathLength = 90; // frames
    static constexpr float quickness = 0.25f;     // how much of the way to the found box each frame goes

    static void glide(float& edge, int target, float share) { edge += share * (static_cast<float>(target) - edge); }

    Ko::Bbox<float> box{};
    std::deque<Ko::Point<int>> path;
    int framesSinceFound = 0;
};

/// "frame 123   0:04.10" in the lower left corner.
void drawCounter(Ko::Image<>& frame, const Ko::Font& font, unsigned long number, Ko::Frac<unsigned int> rate) {
    const unsigned long hundredths = number * 100 * rate.den / rate.num;
    std::ostringstream text;
    text << "frame " << number << "   " << hundredths / 6000 << ":" << std::setfill('0') << std::setw(2)
         << hundredths / 100 % 60 << "." << std::setw(2) << hundredths % 100;
    font.drawText(frame, text.str(), {fontSize / 2, static_cast<int>(frame.height) - fontSize / 2}, white);
}

struct Options {
    std::string input;
    std::string output;
    std::string encoder;
    unsigned int bitRate = 2000000;
    bool force = false;
};

/// @param start the position behind the first frame: time stamps need not begin at 0
std::string progressText(unsigned long frames, const Ko::VideoInputVideoFile& source, long start) {
    std::string text = std::to_string(frames) + " frames";
    if (source.getLength() > 0)
        text += ", " + std::to_string(std::min(100L, 100 * (source.tell() - start) / source.getLength())) + " %";
    return text;
}

void printTotals(unsigned long frames, Ko::Timer& all, const std::vector<std::pair<const char*, Ko::Timer*>>& stages) {
    const double seconds = all.stop() / 1e6;
    std::cout << std::fixed << std::setprecision(2) << frames << " frames in " << seconds << " s, "
              << (seconds > 0 ? static_cast<double>(frames) / seconds : 0) << " frames/s\n";
    for (const auto& [name, timer] : stages)
        std::cout << "  " << name << " " << timer->getCum() / 1e6 << " s\n";
}

void track(const Options& options) {
    Ko::Timer all;
    std::error_code missing;
    if (std::filesystem::equivalent(options.input, options.output, missing))
        throw std::runtime_error("INPUT and OUTPUT are the same file.");
    Ko::VideoInputVideoFile source;
    source.setAnyFormat(true).open(options.input);
    example::requireReplaceable(options.output, options.force); // while Ctrl-C still ends the question
    example::catchStops();
    Ko::Frac<unsigned int> rate = source.getFrameRate();
    if (rate.num == 0 || rate.den == 0)
        rate = {25, 1}; // the file does not tell
    Ko::VideoOutputVideoFile sink;
    sink.setThrowOnFailure(true).setAnyFormat(true);       // odd sizes too
    sink.setColor(source.getColorMatrix(), Ko::CR_STUDIO); // samples are those of the input, in studio range
    if (!options.encoder.empty())
        sink.setEncoder(options.encoder);
    const bool onItsSide = example::isQuarterTurn(source.getOrientation());
    example::openOutput(sink, onItsSide ? source.getHeight() : source.getWidth(),
                        onItsSide ? source.getWidth() : source.getHeight(), options.output, rate, options.bitRate);

    Ko::Timer reading, finding, drawing, writing;
    Ko::Image frame(Ko::PF_YCC444P);
    example::Upright upright;
    Ko::Font font;
    font.init(nullptr, 0, fontSize); // the built-in one
    MotionFinder finder;
    Track path;
    example::Progress progress;
    unsigned long frames = 0;
    long start = 0;
    while (!example::stopAsked()) {
        reading.start();
        const bool delivered = upright.read(source, frame);
        reading.stop();
        if (!delivered)
            break;
        finding.start();
        path.update(finder.find(frame));
        finding.stop();
        drawing.start();
        path.draw(frame, font);
        drawCounter(frame, font, frames, rate);
        drawing.stop();
        writing.start();
        sink.write(frame);
        writing.stop();
        if (frames == 0)
            start = source.tell();
        ++frames;
        if (progress.due())
            progress.show(progressText(frames, source, start));
    }
    progress.clear();
    if (!source.getError().empty())
        std::cerr << options.input << ": " << source.getError() << "\n";
    writing.start();
    sink.close(); // what is still queued is encoded here
    writing.stop();
    printTotals(frames, all, {{"read ", &reading}, {"find ", &finding}, {"draw ", &drawing}, {"write", &writing}});
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    example::Program program(argc, argv, "Finds what moves in a video and draws it into a copy.");
    program.add_option("INPUT", options.input, "Video file to read")->required();
    program.add_option("OUTPUT", options.output, "Video file to write; its extension chooses the container")
        ->required()
        ->check(example::fileName());
    program.add_option("--encoder", options.encoder, "Encoder by its libavcodec name, libx264 for example")
        ->type_name("NAME");
    program.add_option("--bitrate", options.bitRate, "Bits per second")
        ->type_name("N")
        ->check(example::wholeNumber(1))
        ->capture_default_str();
    example::addForce(program, options.force);
    return program.run([&] { track(options); });
}
