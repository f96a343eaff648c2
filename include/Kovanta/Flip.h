// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_FLIP_H
#define KOVANTA_FLIP_H

#include "Kovanta/Export.h"

namespace Ko {

/// @addtogroup images
/// @{

template <class T>
class KOVANTA_API Image; // Kovanta/Image.h, which offers these functions too

/// @name Mirroring
/// For PF_Y (plane 0 only), PF_YCC444P and PF_RGB images. One thread at a time per image; calls on different images
/// may run at once.
/// @throws std::logic_error "[flipVer]: Image not planar, nor packed!" or "[flipHor]: ..." for every other format
/// @{

/// Swaps top and bottom in place; the middle row of an odd height stays. Untouched on a refusal.
KOVANTA_API void flipVer(Image<unsigned char>& im);
/// Swaps left and right in place; the middle column of an odd width stays. Untouched on a refusal.
KOVANTA_API void flipHor(Image<unsigned char>& im);

/// Makes @p dst the top-to-bottom mirror of @p src, in the source's format and size; the two are different images.
/// A refused format leaves @p dst with the source's format and size.
/// @throws std::logic_error when @p dst wraps memory of another size: "[Array2D<T>::resize]: ..."
/// @throws std::runtime_error "[flipVer]: Image too large.", std::bad_alloc
KOVANTA_API void flipVer(Image<unsigned char>& dst, const Image<unsigned char>& src);
/// Makes @p dst the left-to-right mirror of @p src; otherwise as flipVer().
KOVANTA_API void flipHor(Image<unsigned char>& dst, const Image<unsigned char>& src);
/// @}

/// @}

} // namespace Ko

#endif
