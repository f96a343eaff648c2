// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoOutputVideoFile.h"

#include "Kovanta/LibAvMutex.h"
#include "Kovanta/ThreadedBuffer.h"
#include "libav/Log.h"
#include "util/Errors.h"
#include "videoout/FramePool.h"
#include "videoout/VideoFileEncoder.h"

#include <boost/thread/lock_guard.hpp>
#include <boost/thread/thread.hpp>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <exception>
#include <iostream>
#include <locale>
#include <map>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace Ko {

namespace {

using Guard = boost::lock_guard<boost::mutex>;
using ErrorGuard = std::lock_guard<std::mutex>;

constexpr std::size_t reasonLength = 500; // characters; what is longer is cut

/// Composed first and handed over in one piece, so that the lines of two writers do not mix. Where even that fails,
/// the writer ends without a line.
void reportEnd(const char* how, const char* reason = "") noexcept {
    try {
        std::ostringstream line;
        line.imbue(std::locale::classic()); // an id is no number to be grouped
        line << "Thread " << boost::this_thread::get_id() << ": " << how << reason << "\n";
        if (line) // a stream tells in this way that it had no memory
            std::cerr << line.str() << std::flush;
    } catch (const std::exception&) {
    }
}

} // namespace

struct KOVANTA_LOCAL VideoOutputVideoFile::Impl {
    /// All that exists between open() and close().
    struct Output {
        VideoFileEncoder encoder;
        ThreadedBuffer<Image<>> buffer;
        FramePool pool;
        boost::thread writer; ///< Not a thread while open() has not got that far.
    };

    void release();
    void writerThread(Output& to);
    void discardFrames(Output& to) noexcept;
    void setError(const char* reason) noexcept;
    void throwFailure() const;

    const AVCodec* codec = nullptr; ///< Null for the container's default one.
    int codecFlags = 0;
    unsigned int queueSize = 5;
    std::unique_ptr<Output> output;
    bool fragments = false;
    Frac<unsigned int> pixelAspect{0, 1};
    ColorTags color;
    bool anyFormat = false;
    std::map<std::string, std::string> options;
    std::atomic<bool> throwOnFailure{false};
    std::atomic<bool> failed{false}; ///< Spares each write() the lock.
    mutable std::mutex errorMutex;
    std::string error; ///< Has memory beforehand: there may be none left when it is needed.
};

/// What close() does once it holds libAvMutex.
void VideoOutputVideoFile::Impl::release() {
    if (!output)
        return;
    if (output->writer.joinable()) {
        {
            // Interrupted here, the join would leave a writer behind that works on released objects.
            const boost::this_thread::disable_interruption uninterrupted;
            output->writer.interrupt();
            output->writer.join();
        }
        // Each step is tried, whatever became of the one before: the file shall hold all it can.
        VideoFileEncoder& encoder = output->encoder;
        for (const auto step :
             {&VideoFileEncoder::drain, &VideoFileEncoder::writeTrailer, &VideoFileEncoder::closeFile})
            try {
                (encoder.*step)();
            } catch (const std::exception& e) {
                setError(e.what());
            }
    }
    output.reset();
}

void VideoOutputVideoFile::Impl::writerThread(Output& to) {
    try {
        for (;;) {
            Image frame = to.buffer.get();
            to.encoder.frameWrite(frame);
            to.pool.give(std::move(frame));
        }
    } catch (const boost::thread_interrupted&) {
        reportEnd("Interrupted.");
        return;
    } catch (const std::exception& e) {
        setError(e.what());
        reportEnd("Error: ", e.what());
    }
    if (throwOnFailure)
        discardFrames(to);
}

/// Frees a write() that waits for room, so that it can throw.
void VideoOutputVideoFile::Impl::discardFrames(Output& to) noexcept {
    try {
        for (;;)
            to.buffer.get();
    } catch (...) { // interrupted by close()
    }
}

/// The first reason stays: what follows from it says less.
void VideoOutputVideoFile::Impl::setError(const char* reason) noexcept {
    const ErrorGuard lock(errorMutex);
    if (error.empty())
        error.assign(reason, std::min(std::strlen(reason), error.capacity()));
    failed = true;
}

void VideoOutputVideoFile::Impl::throwFailure() const {
    if (!throwOnFailure || !failed)
        return;
    const ErrorGuard lock(errorMutex);
    throw std::runtime_error(error);
}

VideoOutputVideoFile::VideoOutputVideoFile()
    : impl(std::make_unique<Impl>()) {
    libav::quietByDefault();
}

VideoOutputVideoFile::VideoOutputVideoFile(unsigned int width, unsigned int height, const std::string& filename,
                                           Frac<unsigned int> frameRate, unsigned int bitRate)
    : VideoOutputVideoFile() {
    open(width, height, filename, frameRate, bitRate);
}

VideoOutputVideoFile::~VideoOutputVideoFile() {
    try {
        const Guard lock(libAvMutex);
        impl->release();
    } catch (const std::exception& e) {
        std::cerr << "[VideoOutputVideoFile::~VideoOutputVideoFile]: " << e.what() << std::endl;
    }
}

void VideoOutputVideoFile::open(unsigned int width, unsigned int height, const std::string& filename,
                                Frac<unsigned int> frameRate, unsigned int bitRate) {
    const Guard lock(libAvMutex);
    impl->release();
    {
        const ErrorGuard errorLock(impl->errorMutex);
        impl->error.clear();
        impl->error.reserve(reasonLength);
        impl->failed = false;
    }
    impl->output = std::make_unique<Impl::Output>();
    Impl::Output& output = *impl->output;
    output.encoder.open(filename,
                        {width, height, frameRate, bitRate, impl->codecFlags, impl->fragments, impl->pixelAspect,
                         impl->color, impl->anyFormat, impl->options},
                        impl->codec);
    output.buffer.setCapacity(impl->queueSize);
    output.buffer.setDropOldest(false);
    output.writer = boost::thread([&self = *impl, &output] { self.writerThread(output); });
}

bool VideoOutputVideoFile::write(const Image<>& image) {
    if (!impl->output || !impl->output->writer.joinable())
        throwLogicError("VideoOutputVideoFile::write", "Not opened.");
    impl->throwFailure();
    Image copy = impl->output->pool.take();
    copy = image;
    impl->output->buffer.put(std::move(copy));
    impl->throwFailure(); // the writer may have met its error meanwhile
    return true;
}

void VideoOutputVideoFile::close() {
    const Guard lock(libAvMutex);
    if (!impl->output)
        return;
    impl->release();
    impl->throwFailure();
}

bool VideoOutputVideoFile::isOpened() const {
    return impl->output != nullptr;
}

std::string VideoOutputVideoFile::getError() const {
    const ErrorGuard lock(impl->errorMutex);
    return impl->error;
}

VideoOutputVideoFile& VideoOutputVideoFile::setEncoder(const std::string& name) {
    impl->codec = avcodec_find_encoder_by_name(name.c_str());
    if (!impl->codec)
        throwLogicError("VideoOutputVideoFile::setEncoder", "avcodec_find_encoder_by_name failed.");
    return *this;
}

VideoOutputVideoFile& VideoOutputVideoFile::setInterlace(bool on) {
    constexpr int interlaced = AV_CODEC_FLAG_INTERLACED_DCT | AV_CODEC_FLAG_INTERLACED_ME;
    impl->codecFlags = on ? impl->codecFlags | interlaced : impl->codecFlags & ~interlaced;
    return *this;
}

VideoOutputVideoFile& VideoOutputVideoFile::setQueueSize(unsigned int n) {
    impl->queueSize = n;
    return *this;
}

VideoOutputVideoFile& VideoOutputVideoFile::setOption(const std::string& name, const std::string& value) {
    if (value.empty())
        impl->options.erase(name);
    else
        impl->options[name] = value;
    return *this;
}

VideoOutputVideoFile& VideoOutputVideoFile::setPixelAspect(Frac<unsigned int> aspect) {
    impl->pixelAspect = aspect.den == 0 ? Frac<unsigned int>{0, 1} : aspect;
    return *this;
}

VideoOutputVideoFile& VideoOutputVideoFile::setColor(ColorMatrix matrix, ColorRange range) {
    if (matrix > CM_BT2020)
        throwLogicError("VideoOutputVideoFile::setColor", "Unknown color matrix.");
    if (range > CR_FULL)
        throwLogicError("VideoOutputVideoFile::setColor", "Unknown color range.");
    impl->color = {matrix, range};
    return *this;
}

VideoOutputVideoFile& VideoOutputVideoFile::setAnyFormat(bool on) {
    impl->anyFormat = on;
    return *this;
}

VideoOutputVideoFile& VideoOutputVideoFile::setFragments(bool on) {
    impl->fragments = on;
    return *this;
}

VideoOutputVideoFile& VideoOutputVideoFile::setThrowOnFailure(bool on) {
    impl->throwOnFailure = on;
    return *this;
}

} // namespace Ko
