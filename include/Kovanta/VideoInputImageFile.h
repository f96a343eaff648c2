// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_VIDEOINPUTIMAGEFILE_H
#define KOVANTA_VIDEOINPUTIMAGEFILE_H

#include "Kovanta/VideoInputBase.h"

#include <memory>
#include <string>

namespace Ko {

/// @addtogroup videoin
/// @{

/// The stills of one directory, played as frames.
///
/// Every regular file (or link to one) whose extension is .jpg, .jpeg, .png, .ppm or .pgm in any case is a frame; the
/// order is that of the names, byte by byte, so numbers need leading zeros. The directory is listed once, when the
/// source is made. Positions count frames from 0. One thread at a time per object.
///
/// A directory of a single still is at its end from the start; a seek() makes that still readable.
class KOVANTA_API VideoInputImageFile : public VideoInput {
public:
    /// Lists a directory and reads its first still, for the width and height.
    /// @throws std::runtime_error "[VideoInputImageFile::VideoInputImageFile]: " followed by
    ///         "Invalid image file directory given!", "Error reading image directory! (REASON)" or
    ///         "No image files found!"; what readImage() throws for the first still
    VideoInputImageFile(std::string directory); // NOLINT(google-explicit-constructor)
    VideoInputImageFile(const VideoInputImageFile&) = delete;
    VideoInputImageFile& operator=(const VideoInputImageFile&) = delete;
    ~VideoInputImageFile() override;

    /// Delivers the next still in the pixel format that @p frame has and in the still's own size, which need not be
    /// that of the first.
    /// @return false at the end, with @p frame untouched
    /// @throws std::runtime_error "[VideoInputImageFile::read]: Error reading image! (REASON)"; the position stays
    bool read(Image<>& frame) override;
    /// Moves to a still, and away from the end. Offsets count as unsigned numbers: VP_BEGIN goes to @p offset and
    /// VP_CURRENT that far on (a negative offset: back), either to the last still if that is not before it; VP_END goes
    /// @p offset back from the last still, or to the first if it is not that far.
    /// @return the new position
    /// @throws std::logic_error "[VideoInputImageFile::seek]: Erroneous position indicator given!"; nothing changes
    long seek(long offset, VideoPosId origin) override;
    /// The index of the still that the next read() delivers; after the last, still that one's.
    long tell() const override;
    /// Whether the last still was delivered and no seek() has come since.
    bool eof() const override;
    /// Width of the first still in pixels.
    unsigned int getWidth() const override;
    /// Height of the first still in pixels.
    unsigned int getHeight() const override;
    /// The number of stills.
    long getLength() const override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

/// @}

} // namespace Ko

#endif
