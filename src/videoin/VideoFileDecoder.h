#ifndef KOVANTA_SRC_VIDEOIN_VIDEOFILEDECODER_H
#define KOVANTA_SRC_VIDEOIN_VIDEOFILEDECODER_H

#include "Kovanta/Frac.h"
#include "libav/Handles.h"
#include "videoin/PictureClock.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Ko {

/// The pictures of a file's first video stream, one after the other in display order, each with its time stamp.
///
/// open() and the destructor want libAvMutex held by the caller; nothing else does.
class VideoFileDecoder {
public:
    /// Opens the file, its first video stream and the decoder for it. After an exception the object is fit only to be
    /// destroyed.
    /// @throws std::runtime_error as VideoInputVideoFile::open(), std::bad_alloc
    void open(const std::string& filename, const AVInputFormat* forcedFormat);

    /// The next picture, valid until the next call, or null when the file has no more. After the last packet come the
    /// pictures that the decoder held back.
    const AVFrame* next();

    /// Time stamp of the picture that next() gave, in stream ticks.
    std::int64_t timeStamp() const { return clock.timeStamp(); }
    /// Whether the file told it, or it was counted from one that the file told since the last seek.
    bool knowsTime() const { return clock.knowsTime(); }

    /// Goes to the key frame at or before a time stamp. @return false when the container refuses; nothing has changed
    /// then
    bool seek(std::int64_t target);
    /// Goes to the beginning. @return as seek()
    bool rewind();

    /// As the file tells, before anything is decoded.
    const AVCodecContext& description() const { return *codec; }
    const char* filename() const { return container->url; }
    Frac<unsigned int> frameRate() const;
    /// Length in stream ticks, of the stream or else of the whole file.
    std::optional<std::int64_t> length() const;
    /// The stream's length field, whatever it says.
    std::int64_t lengthField() const { return stream->duration; }
    /// One second in ticks, at least 1.
    std::int64_t second() const;

private:
    void openDecoder();
    void feed();
    void flush();

    libav::InputContextHandle container;
    libav::CodecContextHandle codec;
    libav::PacketHandle packet;
    libav::FrameHandle picture;
    AVStream* stream = nullptr; ///< Belongs to the container.

    AVRational rate{0, 1}; ///< {0, 1} when not known.
    PictureClock clock;
    bool keyFed = false;    ///< Since the last flush.
    bool awaitsKey = false; ///< Packets are left out until one can be decoded by itself.
    bool draining = false;
    bool resend = false; ///< The packet was refused because output was pending; it is offered once more.
};

} // namespace Ko

#endif
