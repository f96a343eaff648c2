// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_VIDEOOUTPUTBASE_H
#define KOVANTA_VIDEOOUTPUTBASE_H

#include "Kovanta/Export.h"
#include "Kovanta/Image.h"

namespace Ko {

/// @addtogroup videoout
/// @{

/// A sink of frames: a window, a video file. One thread at a time per object.
class KOVANTA_API VideoOutput {
public:
    /// Closes the sink.
    virtual ~VideoOutput();
    /// Hands one frame to the sink, which copies what it needs. @return true on success
    virtual bool write(const Image<>& image) = 0;
};

/// @}

} // namespace Ko

#endif
