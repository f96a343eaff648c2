// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOIN_VIDEOFILEDECODER_H
#define KOVANTA_SRC_VIDEOIN_VIDEOFILEDECODER_H

#include "Kovanta/Frac.h"
#include "libav/Handles.h"
#include "videoin/DisplayMatrix.h"
#include "videoin/PictureClock.h"

#include <atomic>
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
    bool knowsTime() const { return clock.knowsTime() && !guessed; }

    /// Goes to the key frame at or before a time stamp. @return false when the container refuses
    bool seek(std::int64_t target);
    /// Goes to the beginning. @return as seek()
    bool rewind();
    /// Whether the file is the bare stream of a codec, without a container and its time stamps.
    bool isElementary() const;

    /// As the file tells, before anything is decoded.
    const AVCodecContext& description() const { return *codec; }
    Orientation orientation() const { return orientationOf(*stream); }
    const std::string& filename() const { return name; }
    Frac<unsigned int> frameRate() const;
    /// One tick in seconds.
    AVRational timeBase() const { return stream->time_base; }
    /// Which picture next() gave, counted from 1, as the container's constant rate has it; -1 where it tells of none.
    std::int64_t pictureNumber() const;
    /// Time stamp of the first picture, in stream ticks; 0 where the file does not tell.
    std::int64_t start() const;
    /// Length in stream ticks, of the stream or else of the whole file.
    std::optional<std::int64_t> length() const;
    /// Where the length ends, counted from the start.
    std::optional<std::int64_t> farEnd() const;
    /// The stream's length field, whatever it says.
    std::int64_t lengthField() const { return stream->duration; }
    /// One second in ticks, at least 1.
    std::int64_t second() const;
    /// What libav reported last and how many packets it could not decode; empty while all is well.
    std::string error() const;

private:
    /// What the container tells of where a packet stands.
    struct Place {
        std::int64_t pts;
        std::int64_t dts;
        std::int64_t pos;
    };

    static int getBuffer(AVCodecContext* codec, AVFrame* frame, int flags);
    void chooseStream();
    void openDecoder();
    void feed();
    bool readPacket();
    void findFirst();
    bool isFirst(const AVPacket& found) const;
    void note(int error);
    void refuseWithoutMemory(int error);
    bool move(std::int64_t target, int flags);

    std::string name;
    libav::InputContextHandle container;
    std::atomic<bool> outOfMemory{false}; ///< Set by the decoder's threads; outlives the decoder.
    libav::CodecContextHandle codec;
    libav::PacketHandle packet;
    libav::FrameHandle picture;
    AVStream* stream = nullptr; ///< Belongs to the container.

    AVRational rate{0, 1}; ///< {0, 1} when not known.
    PictureClock clock;
    std::optional<Place> first; ///< Of the file's first packet, once anything was read.
    bool anyFed = false;        ///< Since the container moved last, as the next ones.
    bool keyFed = false;
    bool guessed = false;   ///< The first packet shares a time stamp with others; libav guessed its own, maybe wrongly.
    bool awaitsKey = false; ///< Packets are left out until one can be decoded by itself.
    bool draining = false;
    bool packetWaits = false; ///< The packet was read already and is yet to be fed.
    bool resend = false;      ///< The packet was refused because output was pending; it is offered once more.

    int lastError = 0; ///< Of libav; 0 for none.
    unsigned long damagedPackets = 0;
};

} // namespace Ko

#endif
