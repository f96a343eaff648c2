// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_RESIZE_H
#define KOVANTA_RESIZE_H

#include "Kovanta/Export.h"
#include "Kovanta/Image.h"

namespace Ko {

/// @addtogroup images
/// @{

/// Fills @p dst, in the size that it has, with the picture of @p src: a scaled copy. For every format but PF_YUY2; both
/// images have the same one. Only samples of @p dst change, and planes that were never sized get their memory, so that
/// a rectangle of a larger picture can be the target:
///
///     Ko::Image small(Ko::PF_YCC444P);
///     small.size(320, 180);
///     Ko::resize(small, frame);
///
/// Columns and rows are scaled each in its own way, of n samples to m:
/// - m <= n: the mean over the stretch that a target sample covers. Sample x covers [x n/m, (x+1) n/m) of the source,
///   whose sample i covers [i, i+1), and each one weighs what is covered of it. (n = m is a copy.)
/// - m > n: a straight line between the two nearest centres. Sample x lies at p = (x + 1/2) n/m - 1/2 between the
///   samples i = floor(p), which weighs 1 - (p - i), and i+1, which weighs p - i. Before the first centre and behind
///   the last one the outermost sample has all the weight.
///
/// A target sample is floor(S + 1/2), where S is the sum of the source samples, each times its column's and its row's
/// weight, over the sum of all weights. The weights are taken as the fractions that they are, and nothing is rounded
/// before: results are exact, the same on every processor, and a picture of one colour keeps it.
///
/// Each plane is scaled by itself over its whole area, so halved chroma lies in the middle of its pixels, before and
/// after; where the source is too narrow or too low for chroma, the target's becomes 128. Each component of packed
/// pixels is scaled by itself, alpha too. What a source's description claims and its planes do not hold counts as 0.
/// The two may share memory: what the source held before counts. Several threads may scale one source into images of
/// their own.
/// @throws std::logic_error "[resize]: Don't know how to resize FORMAT.", "[resize]: The source is FORMAT, the target
///         FORMAT.", "[resize]: The source has no size.", "[resize]: The target has no size.", and when @p dst wraps
///         less than its size: "[Array2D<T>::resize]: ..."
/// @throws std::runtime_error "[resize]: Image too large." for a target without memory for its size,
///         "[Image<T>::size]: Image too large." for a source that claims what no image can hold, std::bad_alloc; @p dst
///         is then as it was
KOVANTA_API void resize(Image<>& dst, const Image<>& src);

/// @}

} // namespace Ko

#endif
