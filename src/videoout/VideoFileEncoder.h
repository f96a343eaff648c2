// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOOUT_VIDEOFILEENCODER_H
#define KOVANTA_SRC_VIDEOOUT_VIDEOFILEENCODER_H

#include "Kovanta/Frac.h"
#include "Kovanta/Image.h"
#include "libav/Handles.h"
#include "videoout/AnyFrame.h"
#include "videoout/ColorTags.h"
#include "videoout/EncoderPictures.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace Ko {

/// One video file being written: container, encoder and the pictures between them. The steps of VideoOutputVideoFile,
/// which names them in its messages and sees to threads and locks: everything but frameWrite() runs under libAvMutex.
///
/// A failed open() leaves what it had made to the destructor.
class VideoFileEncoder {
public:
    struct Settings {
        unsigned int width;
        unsigned int height;
        Frac<unsigned int> frameRate;
        unsigned int bitRate;           ///< In bits per second.
        int codecFlags;                 ///< Added to the encoder's own.
        bool fragments;                 ///< Where the container can be written so.
        Frac<unsigned int> pixelAspect; ///< {0, 1} for unknown.
        ColorTags color;
        bool anyFormat;                                    ///< Whether frames and pictures may be others than 4:2:0.
        const std::map<std::string, std::string>& options; ///< Of the encoder, by name.
    };

    VideoFileEncoder() = default;
    VideoFileEncoder(const VideoFileEncoder&) = delete;
    VideoFileEncoder& operator=(const VideoFileEncoder&) = delete;
    ~VideoFileEncoder();

    /// Creates the file and writes its header.
    /// @param codec the encoder; null is replaced by the container's default one
    void open(const std::string& filename, const Settings& settings, const AVCodec*& codec);

    /// Encodes one frame and writes what the encoder gives for it.
    void frameWrite(const Image<>& image);

    /// Writes what the encoder still holds.
    void drain();
    void writeTrailer();
    void closeFile();

private:
    void addVideoStream(const Settings& settings, const AVCodec& codec);
    void openVideo(const Settings& settings, const AVCodec& codec);
    void setEncoderOptions(const Settings& settings);
    void setMuxerOptions(const Settings& settings);
    void writePackets();
    bool feedUnfed() noexcept;

    libav::OutputContextHandle formatContext;
    libav::CodecContextHandle codecContext;
    libav::PacketHandle packet;
    AVStream* stream = nullptr;          ///< The one stream; belongs to the container.
    std::optional<EncoderFormat> format; ///< Nothing where frames cannot be converted to what the encoder takes.
    std::optional<EncoderPictures> pictures;
    std::optional<AnyFrame> anyFrame; ///< Where frames of any format are taken.
    std::uint32_t frameCount = 0;
    bool fed = false; ///< Whether the encoder was given a picture.
};

} // namespace Ko

#endif
