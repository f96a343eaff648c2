// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_ROTATE_H
#define KOVANTA_ROTATE_H

#include "Kovanta/Export.h"
#include "Kovanta/Image.h"

namespace Ko {

/// @addtogroup images
/// @{

/// How a stored picture is to be turned for the eye: the values of EXIF's orientation tag.
enum Orientation : unsigned int {
    OR_UPRIGHT = 1,         ///< As it is.
    OR_MIRRORED = 2,        ///< Left and right swapped.
    OR_ROTATED_180 = 3,     ///< Upside down.
    OR_FLIPPED = 4,         ///< Top and bottom swapped.
    OR_TRANSPOSED = 5,      ///< Rows become columns: mirrored about the diagonal from the top left.
    OR_ROTATED_90 = 6,      ///< A quarter turn clockwise.
    OR_ANTI_TRANSPOSED = 7, ///< Mirrored about the other diagonal.
    OR_ROTATED_270 = 8,     ///< A quarter turn counterclockwise.
};

/// Makes @p dst the picture of @p src turned as @p orientation says, in the source's format; width and height change
/// places where rows become columns. For every format but PF_JFIF422P and PF_YUY2. Each sample is moved and none is
/// changed; the halved chroma of odd sizes, which lacks the last column or row, turns within itself.
/// Several threads may turn one source into images of their own.
/// @throws std::logic_error "[rotate]: Don't know how to rotate FORMAT.", "[rotate]: Unknown orientation.", and when
///         @p dst wraps memory of another size: "[Array2D<T>::resize]: ..."; @p dst has the format then
/// @throws std::runtime_error "[rotate]: Image too large.", std::bad_alloc; @p dst is then as it was
KOVANTA_API void rotate(Image<>& dst, const Image<>& src, Orientation orientation);

/// @}

} // namespace Ko

#endif
