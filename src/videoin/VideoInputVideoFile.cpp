// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoInputVideoFile.h"

#include "Kovanta/LibAvMutex.h"
#include "image/ImageLayout.h"
#include "libav/Log.h"
#include "util/Errors.h"
#include "videoin/PictureDelivery.h"
#include "videoin/StreamColor.h"
#include "videoin/Ticks.h"
#include "videoin/VideoFileDecoder.h"

#include <boost/thread/lock_guard.hpp>

#include <algorithm>
#include <cmath>
#include <exception>
#include <iostream>
#include <limits>
#include <numeric>
#include <optional>
#include <stdexcept>

namespace Ko {

namespace {

using Time = std::int64_t;

/// Sets a flag for as long as it lives.
class Raised {
public:
    explicit Raised(bool& f)
        : flag(f)
        , before(f) {
        flag = true;
    }
    Raised(const Raised&) = delete;
    Raised& operator=(const Raised&) = delete;
    ~Raised() { flag = before; }

private:
    bool& flag;
    bool before;
};

} // namespace

struct KOVANTA_LOCAL VideoInputVideoFile::Impl {
    VideoFileDecoder& opened(const char* operation) const;
    void release() noexcept;
    long rewind();
    bool decodeForward(VideoInput& self, Time target);
    [[noreturn]] void failToSeek() const;

    std::unique_ptr<VideoFileDecoder> decoder; ///< Set from the start of an open, also of a failed one.
    const AVInputFormat* forcedFormat = nullptr;
    PictureDelivery delivery;
    Time position = 0;
    Time delivered = 0; ///< Pictures since the beginning; -1 where a seek has lost count.
    bool looping = false;
    bool ready = false;               ///< Whether an open went through.
    bool endMet = false;              ///< The packets ran out since the last seek.
    bool deliveredSinceStart = false; ///< Keeps a file without pictures from looping for ever.
    bool seeking = false;             ///< A seek's forward decode must not wrap around.
};

VideoFileDecoder& VideoInputVideoFile::Impl::opened(const char* operation) const {
    if (!ready)
        throwLogicError(std::string("VideoInputVideoFile::") + operation, "Not opened.");
    return *decoder;
}

/// With libAvMutex held.
void VideoInputVideoFile::Impl::release() noexcept {
    decoder.reset();
    position = 0;
    delivered = 0;
    ready = false;
    endMet = false;
    deliveredSinceStart = false;
}

void VideoInputVideoFile::Impl::failToSeek() const {
    throwRuntimeError("VideoInputVideoFile::seek", decoder->filename() + ": error while seeking.");
}

long VideoInputVideoFile::Impl::rewind() {
    if (!decoder->rewind())
        failToSeek();
    position = 0;
    delivered = 0;
    endMet = false;
    deliveredSinceStart = false;
    return 0;
}

/// Decodes until the position is the target or past it, or the file ends.
/// @return false when pictures were missed that belong before the target
bool VideoInputVideoFile::Impl::decodeForward(VideoInput& self, Time target) {
    const Raised noLoop(seeking);
    Image scratch(PF_YCC444P);
    bool first = true;
    while (position < target) {
        if (!self.read(scratch))
            return !first;
        if (first && (position > target || !decoder->knowsTime()))
            return false;
        first = false;
    }
    return true;
}

VideoInputVideoFile::VideoInputVideoFile()
    : impl(std::make_unique<Impl>()) {
    libav::quietByDefault();
}

VideoInputVideoFile::VideoInputVideoFile(const std::string& filename)
    : VideoInputVideoFile() {
    open(filename);
}

VideoInputVideoFile::~VideoInputVideoFile() {
    try {
        close();
    } catch (const std::exception& e) {
        std::cerr << e.what() << std::endl;
    }
}

void VideoInputVideoFile::setFormat(const std::string& name) {
    impl->forcedFormat = nullptr;
    if (name.empty())
        return;
    impl->forcedFormat = av_find_input_format(name.c_str());
    if (!impl->forcedFormat)
        throwLogicError("VideoInputVideoFile::setFormat", "av_find_input_format failed.");
}

VideoInputVideoFile& VideoInputVideoFile::setAnyFormat(bool any) {
    impl->delivery.anyFormat = any;
    return *this;
}

void VideoInputVideoFile::open(const std::string& filename) {
    const boost::lock_guard<boost::mutex> lock(libAvMutex);
    impl->release();
    impl->decoder = std::make_unique<VideoFileDecoder>();
    impl->decoder->open(filename, impl->forcedFormat);
    impl->delivery.expect(impl->decoder->description());
    impl->ready = true;
}

void VideoInputVideoFile::close() {
    const boost::lock_guard<boost::mutex> lock(libAvMutex);
    impl->release();
}

bool VideoInputVideoFile::read(Image<>& frame) {
    VideoFileDecoder& source = impl->opened("read");
    ImageLayout::resizeTarget(frame, impl->delivery.width(), impl->delivery.height(), "VideoInputVideoFile::read");
    const bool wraps = impl->looping && !impl->seeking;
    const AVFrame* picture = source.next();
    // Here the end was found by running out of pictures: the length is unknown, or not the last time stamp plus one.
    if (!picture && wraps && impl->deliveredSinceStart) {
        seek(0, VP_BEGIN);
        picture = source.next();
    }
    if (!picture) {
        impl->endMet = true;
        return false;
    }
    impl->position = addTicks(source.timeStamp(), 1);
    impl->delivered = impl->delivered >= 0 ? impl->delivered + 1 : source.pictureNumber();
    impl->deliveredSinceStart = true;
    impl->delivery.deliver(frame, *picture);
    if (wraps && eof())
        seek(0, VP_BEGIN);
    return true;
}

long VideoInputVideoFile::seek(long offset, VideoPosId origin) {
    VideoFileDecoder& source = impl->opened("seek");
    const std::optional<Time> length = source.length();
    const std::optional<Time> farEnd = source.farEnd();
    Time target = 0;
    switch (origin) {
    case VP_BEGIN:
        target = offset;
        break;
    case VP_CURRENT:
        target = addTicks(impl->position, offset);
        break;
    case VP_END:
        if (length && offset < *length)
            target = offset > 0 ? *farEnd - offset : std::numeric_limits<Time>::max();
        break;
    default:
        throwLogicError("VideoInputVideoFile::seek", "Erroneous position indicator given!");
    }
    if (target <= 0)
        return impl->rewind();

    // The length may be too short, so that a target past the far end is still decoded towards. And some containers know
    // only roughly where their key frames are, and land behind the target, behind the last key frame or where no time
    // stamp tells the place. Then it is tried again from further back.
    const Time start = source.start();
    Time aim = std::min(target, farEnd.value_or(target)) - 1;
    for (Time step = source.second();; step = addTicks(step, addTicks(step, step))) {
        const bool fromStart = aim <= start && !source.isElementary();
        if (!(fromStart ? source.rewind() : source.seek(aim)))
            impl->failToSeek();
        impl->position = 0;
        impl->delivered = fromStart ? 0 : -1;
        impl->endMet = false;
        if (impl->decodeForward(*this, target) || fromStart)
            return impl->position;
        aim = std::max(subtractTicks(aim, step), start);
    }
}

long VideoInputVideoFile::tell() const {
    return impl->position;
}

bool VideoInputVideoFile::eof() const {
    const VideoFileDecoder& source = impl->opened("eof");
    return impl->endMet || source.farEnd() == impl->position;
}

unsigned int VideoInputVideoFile::getWidth() const {
    impl->opened("getWidth");
    return impl->delivery.width();
}

unsigned int VideoInputVideoFile::getHeight() const {
    impl->opened("getHeight");
    return impl->delivery.height();
}

long VideoInputVideoFile::getLength() const {
    const VideoFileDecoder& source = impl->opened("getLength");
    return source.length().value_or(source.lengthField());
}

Frac<unsigned int> VideoInputVideoFile::getFrameRate() const {
    return impl->opened("getFrameRate").frameRate();
}

Orientation VideoInputVideoFile::getOrientation() const {
    return impl->opened("getOrientation").orientation();
}

ColorMatrix VideoInputVideoFile::getColorMatrix() const {
    const AVCodecContext& stream = impl->opened("getColorMatrix").description();
    return colorMatrixOf(stream.pix_fmt, stream.colorspace);
}

ColorRange VideoInputVideoFile::getColorRange() const {
    const AVCodecContext& stream = impl->opened("getColorRange").description();
    return colorRangeOf(stream.pix_fmt, stream.color_range);
}

Frac<unsigned int> VideoInputVideoFile::getTimeBase() const {
    const AVRational base = impl->opened("getTimeBase").timeBase();
    if (base.num <= 0 || base.den <= 0)
        return {1, 0};
    const int divisor = std::gcd(base.num, base.den);
    return {static_cast<unsigned int>(base.num / divisor), static_cast<unsigned int>(base.den / divisor)};
}

double VideoInputVideoFile::seconds(long position) const {
    const VideoFileDecoder& source = impl->opened("seconds");
    const Time ticks = std::max<Time>(0, subtractTicks(position, source.start()));
    return static_cast<double>(ticks) * av_q2d(source.timeBase());
}

long VideoInputVideoFile::position(double seconds) const {
    const VideoFileDecoder& source = impl->opened("position");
    const Frac<unsigned int> rate = source.frameRate();
    const double tick = av_q2d(source.timeBase());
    const double frame = std::max(1.0, rate.den == 0 ? 1.0 : rate.den / (rate.num * tick));
    // Of the picture shown then; time stamps that are rounded to ticks may lie before their time.
    const double number = std::floor((seconds / tick + std::min(1.0, frame / 2)) / frame);
    if (!(number >= 1))
        return 0;
    // A seek ends behind the first picture at or past its target; halfway between two of them it meets the right one.
    const double target = number < 2 ? 1.0 : std::round((number - 1) * frame - std::floor((frame - 1) / 2)) + 1;
    constexpr double all = 9.2e18; // fits, and is 292 years of nanoseconds
    return addTicks(source.start(), target < all ? static_cast<Time>(target) : std::numeric_limits<Time>::max());
}

long VideoInputVideoFile::getFrameNumber() const {
    impl->opened("getFrameNumber");
    return impl->delivered;
}

std::string VideoInputVideoFile::getError() const {
    return impl->decoder ? impl->decoder->error() : "";
}

void VideoInputVideoFile::setLoop(bool loop) {
    impl->looping = loop;
}

} // namespace Ko
