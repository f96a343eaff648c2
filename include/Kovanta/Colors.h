// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_COLORS_H
#define KOVANTA_COLORS_H

#include "Kovanta/Draw.h"

namespace Ko {

/// @addtogroup drawing
/// @{

/// The colour that convertIm() makes of an RGB pixel (ITU-R BT.601, studio range), each component 0 to 255.
KOVANTA_API YCCColor fromRgb(unsigned char r, unsigned char g, unsigned char b) noexcept;

/// Named colours for drawing: what convertIm() makes of the RGB values beside them (ITU-R BT.601, studio range).
namespace colors {

inline constexpr YCCColor black{16, 128, 128};      ///< 0, 0, 0
inline constexpr YCCColor darkGrey{71, 128, 128};   ///< 64, 64, 64
inline constexpr YCCColor grey{126, 128, 128};      ///< 128, 128, 128
inline constexpr YCCColor lightGrey{181, 128, 128}; ///< 192, 192, 192
inline constexpr YCCColor white{235, 128, 128};     ///< 255, 255, 255
inline constexpr YCCColor red{81, 90, 240};         ///< 255, 0, 0
inline constexpr YCCColor orange{165, 42, 179};     ///< 255, 165, 0
inline constexpr YCCColor yellow{210, 16, 146};     ///< 255, 255, 0
inline constexpr YCCColor green{145, 54, 34};       ///< 0, 255, 0
inline constexpr YCCColor cyan{170, 166, 16};       ///< 0, 255, 255
inline constexpr YCCColor blue{41, 240, 110};       ///< 0, 0, 255
inline constexpr YCCColor magenta{106, 202, 222};   ///< 255, 0, 255

} // namespace colors

/// @}

} // namespace Ko

#endif
