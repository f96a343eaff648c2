// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOIN_TICKS_H
#define KOVANTA_SRC_VIDEOIN_TICKS_H

#include <cstdint>
#include <limits>

// A file may hold any time stamp and a caller may ask for any offset; sums of ticks stay at the ends of the range.
namespace Ko {

inline std::int64_t addTicks(std::int64_t a, std::int64_t b) {
    std::int64_t sum = 0;
    if (!__builtin_add_overflow(a, b, &sum))
        return sum;
    return a < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
}

inline std::int64_t subtractTicks(std::int64_t a, std::int64_t b) {
    std::int64_t difference = 0;
    if (!__builtin_sub_overflow(a, b, &difference))
        return difference;
    return a < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
}

} // namespace Ko

#endif
