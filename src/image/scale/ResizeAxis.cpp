// SPDX-License-Identifier: BSD-2-Clause
#include "image/scale/ResizeAxis.h"

#include <numeric>

namespace Ko {

ResizeAxis::ResizeAxis(std::uint32_t n, std::uint32_t m)
    : last(n - 1)
    , reducedFrom(n / std::gcd(n, m))
    , reducedTo(m / std::gcd(n, m))
    , sum(m <= n ? reducedFrom : std::uint64_t{2} * reducedTo) {}

Taps ResizeAxis::taps(std::uint32_t x) const {
    const std::uint64_t n = reducedFrom;
    const std::uint64_t m = reducedTo;
    if (m <= n) { // in units of which a source sample takes m and a target sample n
        const std::uint64_t begin = x * n;
        const std::uint64_t end = begin + n;
        const std::uint64_t firstSample = begin / m;
        const std::uint64_t lastSample = (end - 1) / m;
        const auto first = static_cast<std::uint32_t>(firstSample);
        if (firstSample == lastSample)
            return {first, 1, n, 0, 0};
        return {first, static_cast<std::uint32_t>(lastSample - firstSample + 1), (firstSample + 1) * m - begin, m,
                end - lastSample * m};
    }
    // The centre lies at ((2x + 1) n - m) / 2m = whole + (shifted - m) / 2m; so nothing passes 64 bits.
    const std::uint64_t inPeriod = x % m * n;
    const std::uint64_t whole = x / m * n + inPeriod / m;
    const std::uint64_t shifted = 2 * (inPeriod % m) + n;
    if (whole == 0 && shifted <= m)
        return {0, 1, sum, 0, 0};
    const std::uint64_t sample = shifted < m ? whole - 1 : whole;
    const std::uint64_t part = shifted < m ? shifted + m : shifted - m;
    if (sample >= last)
        return {last, 1, sum, 0, 0};
    return {static_cast<std::uint32_t>(sample), 2, sum - part, 0, part};
}

} // namespace Ko
