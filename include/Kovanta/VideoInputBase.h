// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_VIDEOINPUTBASE_H
#define KOVANTA_VIDEOINPUTBASE_H

#include "Kovanta/Export.h"
#include "Kovanta/Image.h"

namespace Ko {

/// @addtogroup videoin
/// @{

/// What the offset of VideoInput::seek() is counted from.
enum VideoPosId : unsigned int {
    VP_BEGIN = 0,   ///< From the first frame.
    VP_CURRENT = 1, ///< From the current position.
    VP_END = 2      ///< Back from the end.
};

/// A source of frames: a video file, a directory of stills, a camera.
///
/// The caller pulls one frame at a time into an image of its own, in the pixel format that it wants. One thread at a
/// time per object. What a position counts, and which errors are thrown, is said by each source.
class KOVANTA_API VideoInput {
public:
    /// Closes the source.
    virtual ~VideoInput();
    /// Delivers the next frame, converted into the format that @p frame has; sizes it too.
    /// @return true when a frame was delivered, false at the end
    virtual bool read(Image<>& frame) = 0;
    /// Moves to a position. @return the new position
    virtual long seek(long offset, VideoPosId origin) = 0;
    /// The position of the frame that the next read() delivers.
    virtual long tell() const = 0;
    /// Whether the end was reached.
    virtual bool eof() const = 0;
    /// Width of the frames in pixels.
    virtual unsigned int getWidth() const = 0;
    /// Height of the frames in pixels.
    virtual unsigned int getHeight() const = 0;
    /// The number of positions; -1 for a source without end.
    virtual long getLength() const = 0;
    /// Asks the source to start again at its end. Sources that cannot loop ignore it.
    virtual void setLoop(bool loop);
};

/// @}

} // namespace Ko

#endif
