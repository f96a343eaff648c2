// SPDX-License-Identifier: BSD-2-Clause
#include "Recorder.h"

#include "support/Output.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <numeric>
#include <stdexcept>
#include <system_error>

namespace {

constexpr std::size_t mostHeld = 16;

} // namespace

Recorder::Recorder(unsigned int w, unsigned int h, const std::string& file, example::Rate chosen, example::Rate guess,
                   unsigned int bits)
    : width(w)
    , height(h)
    , bitRate(bits)
    , name(file)
    , rate(chosen.num != 0                    ? chosen
           : guess.num != 0 && guess.den != 0 ? guess
                                              : example::Rate{25, 1})
    , settled(chosen.num != 0) {
    sink.setThrowOnFailure(true).setAnyFormat(true); // odd sizes too
    sink.setColor(Ko::CM_BT601, Ko::CR_STUDIO);      // as cameras have it, of any size
    open();
}

Recorder::~Recorder() {
    std::error_code ignored;
    if (empty && std::filesystem::is_regular_file(name, ignored))
        std::filesystem::remove(name, ignored);
}

void Recorder::open() {
    example::openOutput(sink, width, height, name, rate, bitRate);
}

void Recorder::settle(double measured) {
    // A driver's fraction is better than a measured number, but a camera in the dark takes its time.
    if (!settled && measured > 0 && std::abs(measured / example::perSecond(rate) - 1) > 0.02) {
        const example::Rate before = rate;
        const auto hundredths = static_cast<unsigned int>(std::max(std::lround(measured * 100), 1L));
        const unsigned int divisor = std::gcd(hundredths, 100u);
        rate = {hundredths / divisor, 100 / divisor};
        try {
            open();
        } catch (const std::runtime_error&) { // MPEG knows a handful of rates
            std::cerr << name << " cannot have " << measured << " frames/s; it gets " << example::perSecond(before)
                      << ".\n";
            rate = before;
            open();
        }
    }
    settled = true;
    for (const Ko::Image<>& frame : held)
        sink.write(frame);
    held.clear();
}

void Recorder::write(const Ko::Image<>& frame, double measured) {
    empty = false;
    if (settled) {
        sink.write(frame);
        return;
    }
    held.push_back(frame);
    if (held.size() >= mostHeld)
        settle(measured);
}

void Recorder::finish(double measured) {
    if (!settled)
        settle(measured);
    sink.close(); // what is still queued is encoded here
}
