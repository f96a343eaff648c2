// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_SCALE_RESIZEAXIS_H
#define KOVANTA_SRC_IMAGE_SCALE_RESIZEAXIS_H

#include <cstdint>

namespace Ko {

/// Which source samples make one target sample: so many from the first on, with their weights.
struct Taps {
    std::uint32_t first;
    std::uint32_t count;
    std::uint64_t firstWeight;
    std::uint64_t innerWeight; ///< Of each between the first and the last.
    std::uint64_t lastWeight;  ///< Where there is more than one.
};

/// The rows or the columns of a scaled copy, n samples to m: the mean of what a sample covers where they become fewer,
/// a straight line between two centres where they become more. Weights are whole numbers.
class ResizeAxis {
public:
    /// Neither is 0.
    ResizeAxis(std::uint32_t n, std::uint32_t m);

    /// The sum of the weights of each target sample.
    std::uint64_t total() const { return sum; }
    Taps taps(std::uint32_t x) const;

    /// The two numbers without their common factor.
    std::uint32_t from() const { return reducedFrom; }
    std::uint32_t to() const { return reducedTo; }

private:
    std::uint32_t last; // source sample
    std::uint32_t reducedFrom;
    std::uint32_t reducedTo;
    std::uint64_t sum;
};

} // namespace Ko

#endif
