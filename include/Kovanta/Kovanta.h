// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_KOVANTA_H
#define KOVANTA_KOVANTA_H

/// @file
/// The whole library.

#include "Kovanta/ColorMatrix.h"
#include "Kovanta/Colors.h"
#include "Kovanta/ConvertIm.h"
#include "Kovanta/Draw.h"
#include "Kovanta/Font.h"
#include "Kovanta/Frac.h"
#include "Kovanta/Image.h"
#include "Kovanta/ImageFile.h"
#include "Kovanta/Resize.h"
#include "Kovanta/Rotate.h"
#include "Kovanta/Timer.h"
#include "Kovanta/Version.h"
#include "Kovanta/VideoInput.h"
#include "Kovanta/VideoOutput.h"
#include "Kovanta/Wrap.h"

#endif
