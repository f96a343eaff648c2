// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_TIMER_H
#define KOVANTA_TIMER_H

#include "Kovanta/Export.h"

#include <boost/date_time/posix_time/ptime.hpp>

#include <cstdint>
#include <string>

namespace Ko {

/// @addtogroup utilities
/// @{

/// A wall-clock stopwatch for profiling. All readings are microseconds modulo 2^32 (a little over 71 minutes).
///
/// With a comment, stop(), get() and getCum() print their reading as one line to standard output, for example
/// "[Timer::stop()]: Comment: decode Time: 1500 usec."; with an empty one they print nothing. Each
/// line is written at once: those of two threads do not mix. One thread at a time per object.
class KOVANTA_API Timer {
public:
    /// A total of 0, started.
    Timer();
    /// Starts measuring now; the total stays.
    void start();
    /// Adds the time since start() to the total. The clock runs on: a second stop() adds the whole time again.
    /// @return the new total
    unsigned int stop(const std::string& comment = "");
    /// @return the total plus the time since start(); changes nothing
    unsigned int get(const std::string& comment = "") const;
    /// @return the total
    unsigned int getCum(const std::string& comment = "") const;
    /// Sets the total to 0; the moment of start() stays.
    void reset();
    /// Adds the other timer's total.
    Timer& operator+=(const Timer& other);

private:
    boost::posix_time::ptime startTime;
    std::uint32_t cumulative = 0;
};

/// @}

} // namespace Ko

#endif
