// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_COLORMATRIX_H
#define KOVANTA_COLORMATRIX_H

namespace Ko {

/// @addtogroup images
/// @{

/// How much of red, green and blue goes into Y'CbCr.
enum ColorMatrix : unsigned int {
    CM_UNKNOWN, ///< Not told.
    CM_BT601,   ///< ITU-R BT.601: standard definition, JPEG, webcams.
    CM_BT709,   ///< ITU-R BT.709: high definition.
    CM_BT2020   ///< ITU-R BT.2020, non-constant luminance: ultra-high definition.
};

/// Which bytes Y'CbCr uses.
enum ColorRange : unsigned int {
    CR_UNKNOWN, ///< Not told.
    CR_STUDIO,  ///< Luma 16..235, chroma 16..240 around 128.
    CR_FULL     ///< All of 0..255.
};

/// @}

} // namespace Ko

#endif
