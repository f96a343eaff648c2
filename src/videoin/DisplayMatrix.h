// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOIN_DISPLAYMATRIX_H
#define KOVANTA_SRC_VIDEOIN_DISPLAYMATRIX_H

#include "Kovanta/Rotate.h"

struct AVStream;

namespace Ko {

/// What the container's display matrix asks for, to the nearest quarter turn; OR_UPRIGHT without one.
Orientation orientationOf(const AVStream& stream);

} // namespace Ko

#endif
