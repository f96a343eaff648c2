// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_VIDEOOUTPUT_H
#define KOVANTA_VIDEOOUTPUT_H

/// @file
/// All sinks of frames.

#include "Kovanta/ThreadedBuffer.h"
#include "Kovanta/VideoOutputBase.h"
#include "Kovanta/VideoOutputDisplay.h"
#include "Kovanta/VideoOutputVideoFile.h"

#endif
