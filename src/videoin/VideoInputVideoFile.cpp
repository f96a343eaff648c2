#include "Kovanta/VideoInputVideoFile.h"

#include "Kovanta/ConvertIm.h"
#include "Kovanta/LibAvMutex.h"
#include "image/ImageLayout.h"
#include "libav/Log.h"
#include "util/Errors.h"
#include "videoin/DecodedPicture.h"
#include "videoin/VideoFileDecoder.h"

#include <boost/thread/lock_guard.hpp>

#include <algorithm>
#include <exception>
#include <iostream>
#include <limits>
#include <optional>
#include <stdexcept>

namespace Ko {

namespace {

using Time = std::int64_t;

/// A file may hold any time stamp and a caller may ask for any offset; sums stay at the ends of the range.
Time add(Time a, Time b) {
    Time sum = 0;
    if (!__builtin_add_overflow(a, b, &sum))
        return sum;
    return a < 0 ? std::numeric_limits<Time>::min() : std::numeric_limits<Time>::max();
}

Time subtract(Time a, Time b) {
    Time difference = 0;
    if (!__builtin_sub_overflow(a, b, &difference))
        return difference;
    return a < 0 ? std::numeric_limits<Time>::min() : std::numeric_limits<Time>::max();
}

[[noreturn]] void failToSeek(const VideoFileDecoder& source) {
    throwRuntimeError("VideoInputVideoFile::seek", std::string(source.filename()) + ": error while seeking.");
}

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

VideoInputVideoFile::VideoInputVideoFile()
    : wrapper(PF_YCC444P) {
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
    forcedFormat = nullptr;
    if (name.empty())
        return;
    forcedFormat = av_find_input_format(name.c_str());
    if (!forcedFormat)
        throwLogicError("VideoInputVideoFile::setFormat", "av_find_input_format failed.");
}

void VideoInputVideoFile::open(const std::string& filename) {
    const boost::lock_guard<boost::mutex> lock(libAvMutex);
    release();
    decoder = std::make_unique<VideoFileDecoder>();
    decoder->open(filename, forcedFormat);
    const AVCodecContext& stream = decoder->description();
    shapeWrapper(wrapper, stream.pix_fmt, static_cast<unsigned int>(stream.width),
                 static_cast<unsigned int>(stream.height));
    ready = true;
}

void VideoInputVideoFile::close() {
    const boost::lock_guard<boost::mutex> lock(libAvMutex);
    release();
}

/// With libAvMutex held.
void VideoInputVideoFile::release() noexcept {
    decoder.reset();
    position = 0;
    ready = false;
    endMet = false;
    deliveredSinceStart = false;
}

VideoFileDecoder& VideoInputVideoFile::opened(const char* operation) const {
    if (!ready)
        throwLogicError((std::string("VideoInputVideoFile::") + operation).c_str(), "Not opened.");
    return *decoder;
}

bool VideoInputVideoFile::read(Image<unsigned char>& frame) {
    VideoFileDecoder& source = opened("read");
    ImageLayout::resizeTarget(frame, wrapper.width, wrapper.height, "VideoInputVideoFile::read");
    const bool wraps = looping && !seeking;
    const AVFrame* picture = source.next();
    // Here the end was found by running out of pictures: the length is unknown, or not the last time stamp plus one.
    if (!picture && wraps && deliveredSinceStart) {
        seek(0, VP_BEGIN);
        picture = source.next();
    }
    if (!picture) {
        endMet = true;
        return false;
    }
    position = add(source.timeStamp(), 1);
    deliveredSinceStart = true;
    wrapPicture(wrapper, *picture);
    convertIm(frame, wrapper);
    if (wraps && eof())
        seek(0, VP_BEGIN);
    return true;
}

long VideoInputVideoFile::seek(long offset, VideoPosId origin) {
    VideoFileDecoder& source = opened("seek");
    const std::optional<Time> length = source.length();
    Time target = 0;
    switch (origin) {
    case VP_BEGIN:
        target = offset;
        break;
    case VP_CURRENT:
        target = add(position, offset);
        break;
    case VP_END:
        target = length ? subtract(*length, offset) : 0;
        break;
    default:
        throwLogicError("VideoInputVideoFile::seek", "Erroneous position indicator given!");
    }
    if (target >= 0 && length && target >= *length)
        target = *length;
    if (target <= 0)
        return rewind(source);

    // Some containers know only roughly where their key frames are, and land behind the target, behind the last key
    // frame or where no time stamp tells the place. Then it is tried again from further back.
    Time aim = target - 1;
    for (Time step = source.second();; step = add(step, add(step, step))) {
        if (!source.seek(aim))
            failToSeek(source);
        position = 0;
        endMet = false;
        if (decodeForward(target) || aim == 0)
            return position;
        aim = std::max<Time>(aim - step, 0);
    }
}

/// Decodes until the position is the target or past it, or the file ends.
/// @return false when pictures were missed that belong before the target
bool VideoInputVideoFile::decodeForward(Time target) {
    const Raised noLoop(seeking);
    Image<unsigned char> scratch(PF_YCC444P);
    bool first = true;
    while (static_cast<std::uint64_t>(position) < static_cast<std::uint64_t>(target)) {
        if (!read(scratch))
            return !first;
        if (first && (position > target || !decoder->knowsTime()))
            return false;
        first = false;
    }
    return true;
}

long VideoInputVideoFile::rewind(VideoFileDecoder& source) {
    if (!source.rewind())
        failToSeek(source);
    position = 0;
    endMet = false;
    deliveredSinceStart = false;
    return 0;
}

long VideoInputVideoFile::tell() const {
    return position;
}

bool VideoInputVideoFile::eof() const {
    const VideoFileDecoder& source = opened("eof");
    return endMet || source.length() == position;
}

unsigned int VideoInputVideoFile::getWidth() const {
    opened("getWidth");
    return wrapper.width;
}

unsigned int VideoInputVideoFile::getHeight() const {
    opened("getHeight");
    return wrapper.height;
}

long VideoInputVideoFile::getLength() const {
    const VideoFileDecoder& source = opened("getLength");
    return source.length().value_or(source.lengthField());
}

Frac<unsigned int> VideoInputVideoFile::getFrameRate() const {
    return opened("getFrameRate").frameRate();
}

void VideoInputVideoFile::setLoop(bool loop) {
    looping = loop;
}

} // namespace Ko
