// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_DRAW_TEXTBLEND_H
#define KOVANTA_SRC_DRAW_TEXTBLEND_H

#include "Kovanta/Draw.h"

#include <cstddef>

namespace Ko {

/// Blends a colour into n pixels of three planes: each sample s becomes ((256 - a) * s + a * c) >> 8 under the
/// coverage a. Nothing overlaps, and nothing beyond the n bytes is read or written.
void blendText(unsigned char* y, unsigned char* cb, unsigned char* cr, const unsigned char* coverage, std::size_t n,
               YCCColor c);

} // namespace Ko

#endif
