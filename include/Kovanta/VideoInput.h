// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_VIDEOINPUT_H
#define KOVANTA_VIDEOINPUT_H

/// @file
/// All sources of frames.

#include "Kovanta/LibAvMutex.h"
#include "Kovanta/VideoInputBase.h"
#include "Kovanta/VideoInputCaptureABC.h"
#include "Kovanta/VideoInputCaptureV4L.h"
#include "Kovanta/VideoInputImageFile.h"
#include "Kovanta/VideoInputVideoFile.h"

#endif
