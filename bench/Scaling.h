// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_BENCH_SCALING_H
#define KOVANTA_BENCH_SCALING_H

#include "Contest.h"
#include "image/kernels/KernelLevels.h"

#include <optional>

namespace bench {

/// Scaled copies by us, level by level or at one only, and by others: libyuv's box filter, which takes straight lines
/// instead from half the size on, and OpenCV's means of areas and, for more samples, straight lines. Called "FORMAT,
/// WxH to WxH".
std::vector<Contest> scalingContests(std::optional<Ko::KernelLevel> only);

} // namespace bench

#endif
