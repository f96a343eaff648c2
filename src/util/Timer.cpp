// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Timer.h"

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <iostream>
#include <string>

namespace Ko {

namespace {

boost::posix_time::ptime now() {
    return boost::posix_time::microsec_clock::universal_time();
}

std::uint32_t microsecondsSince(const boost::posix_time::ptime& start) {
    return static_cast<std::uint32_t>((now() - start).total_microseconds());
}

void print(const char* operation, const std::string& comment, std::uint32_t value) {
    if (comment.empty())
        return;
    // Written at once, so that the lines of two threads do not mix.
    const std::string line = std::string("[Timer::") + operation + "()]: Comment: " + comment +
                             " Time: " + std::to_string(value) + " usec.\n";
    std::cout << line << std::flush;
}

} // namespace

Timer::Timer() {
    start();
}

void Timer::start() {
    startTime = now();
}

unsigned int Timer::stop(const std::string& comment) {
    cumulative += microsecondsSince(startTime);
    print("stop", comment, cumulative);
    return cumulative;
}

unsigned int Timer::get(const std::string& comment) const {
    const std::uint32_t value = cumulative + microsecondsSince(startTime);
    print("get", comment, value);
    return value;
}

unsigned int Timer::getCum(const std::string& comment) const {
    print("getCum", comment, cumulative);
    return cumulative;
}

void Timer::reset() {
    cumulative = 0;
}

Timer& Timer::operator+=(const Timer& other) {
    cumulative += other.cumulative;
    return *this;
}

} // namespace Ko
