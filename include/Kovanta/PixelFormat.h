// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_PIXELFORMAT_H
#define KOVANTA_PIXELFORMAT_H

#include "Kovanta/Export.h"

#include <string>

namespace Ko {

/// @addtogroup images
/// @{

/// The pixel formats of an Image. The values are part of the interface.
///
/// Planar formats keep each component in its own plane, at the resolution given here as horizontal x vertical
/// divisor; packed formats keep whole pixels in plane 0. Planar Y'CbCr is studio range (ITU-R BT.601: Y' 16..235,
/// Cb and Cr 16..240 nominal) except where the name says JFIF, which is full range (0..255).
enum PIXEL_FORMAT : unsigned int {
    PF_UNKNOWN = 0,   ///< No format; an Image refuses it.
    PF_YCC444P = 1,   ///< Planar Y', Cb, Cr, all at full resolution. The working format of the library.
    PF_YCCA4444P = 2, ///< As PF_YCC444P, with alpha in plane 3.
    PF_RGB = 3,       ///< Packed R, G, B bytes.
    PF_RGBA = 4,      ///< Packed R, G, B, A bytes.
    PF_Y = 5,         ///< Grey in plane 0, full range when converted. Planes 1 and 2 (2x1) are allocated but unused.
    PF_YAP = 6,       ///< As PF_Y, with alpha in plane 3.
    PF_JFIF = 7,      ///< Packed Y', Cb, Cr bytes, full range.
    PF_JFIF422P = 8,  ///< Planar Y', Cb (2x1), Cr (2x1), full range.
    PF_YCC420P = 9,   ///< Planar Y', Cb (2x2), Cr (2x2).
    PF_BGR = 10,      ///< Packed B, G, R bytes.
    PF_YUY2 = 11      ///< Packed Y0, Cb, Y1, Cr for each pair of pixels.
};

/// @}

} // namespace Ko

/// @addtogroup images
/// @{

/// The name and a short description of a pixel format, as used in messages.
/// @return "Unknown enumeration" for a value outside the enumeration. Thread-safe.
KOVANTA_API std::string fmt2string(Ko::PIXEL_FORMAT format);

/// @}

#endif
