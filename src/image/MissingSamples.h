// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_MISSINGSAMPLES_H
#define KOVANTA_SRC_IMAGE_MISSINGSAMPLES_H

#include "Kovanta/Image.h"

/// What becomes of samples that a source does not have, so that no picture shows what memory held before.
namespace Ko {

/// Whether every plane that pictures use holds what the image's format and size say.
bool isWhole(const Image<>& im) noexcept;

/// Sets what a target of the image's size shows to 0, for a conversion that will not reach all of it.
void blacken(Image<>& im) noexcept;

/// Completes the planes that a 4:4:4 target owns after a conversion from a source with chroma for pairs of pixels, of
/// odd size: the lone last column and row take their neighbours' samples, and 128 where there is no neighbour.
void completeLoneSamples(Image<>& dst, PIXEL_FORMAT source) noexcept;

} // namespace Ko

#endif
