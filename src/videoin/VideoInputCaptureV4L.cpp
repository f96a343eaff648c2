// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoInputCaptureV4L.h"

#include "Kovanta/ConvertIm.h"
#include "util/Errors.h"
#include "videoin/DriverCount.h"
#include "videoin/FrameWait.h"
#include "videoin/V4LBuffer.h"
#include "videoin/V4LHandles.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <stdexcept>
#include <utility>

namespace Ko {

namespace {

constexpr std::uint32_t captureType = V4L2_BUF_TYPE_VIDEO_CAPTURE;

struct FormatPreference {
    std::uint32_t fourcc;
    PIXEL_FORMAT format;
};

constexpr FormatPreference fmtPrefs[] = {
    {V4L2_PIX_FMT_YUV420, PF_YCC420P},
    {V4L2_PIX_FMT_YUYV, PF_YUY2},
    {0, PF_UNKNOWN},
};

/// Enumerations end with the driver's refusal; a driver that never refuses must not hang the caller.
constexpr std::uint32_t enumerationLimit = 4096;

/// Numbers that listDevs() probes.
constexpr unsigned int deviceNumbers = 64;

/// The names of init() and read(), for messages.
const char* const initName = "VideoInputCaptureV4L::init";
const char* const readName = "VideoInputCaptureV4L::read";

/// The message is made of the parts and the reason of the system.
template <class... Parts>
[[noreturn]] void throwSystemError(const char* function, const Parts&... parts) {
    const int error = errno; // before anything allocates
    throwRuntimeError(function, (std::string() + ... + parts), error);
}

/// @param name of the request, for the message
void request(const V4LDevice& device, unsigned long code, void* record, const char* function, const char* name) {
    if (device.ioctl(code, record) == -1)
        throwSystemError(function, "Ioctl ", name, " failed");
}

/// Texts of drivers need not be terminated.
template <std::size_t N>
std::string text(const __u8 (&field)[N]) {
    const auto* const begin = reinterpret_cast<const char*>(field);
    return {begin, ::strnlen(begin, N)};
}

std::string devicePath(unsigned int device) {
    return "/dev/video" + std::to_string(device);
}

/// Calls visit(record) for index 0, 1, ... until the driver refuses or visit returns false.
template <class Record, class Visitor>
void enumerate(const V4LDevice& device, unsigned long code, const Record& preset, Visitor visit) {
    for (std::uint32_t index = 0; index < enumerationLimit; ++index) {
        Record record = preset; // anew: the driver writes its answer into all fields
        record.index = index;
        if (device.ioctl(code, &record) == -1 || !visit(static_cast<const Record&>(record)))
            return;
    }
}

v4l2_input cameraInput() {
    v4l2_input record{};
    record.type = V4L2_INPUT_TYPE_CAMERA;
    return record;
}

v4l2_fmtdesc captureFormat() {
    v4l2_fmtdesc record{};
    record.type = captureType;
    return record;
}

v4l2_buffer mappedBuffer(std::uint32_t index) {
    v4l2_buffer record{};
    record.index = index;
    record.type = captureType;
    record.memory = V4L2_MEMORY_MMAP;
    return record;
}

/// Gives a dequeued buffer back to the driver, at the latest when the scope is left: without it the stream would
/// starve.
class Dequeued {
public:
    Dequeued(const V4LDevice& d, const v4l2_buffer& r)
        : device(d)
        , record(r) {}
    Dequeued(const Dequeued&) = delete;
    Dequeued& operator=(const Dequeued&) = delete;
    ~Dequeued() {
        if (!queued)
            queue();
    }
    int queue() {
        queued = true;
        return device.ioctl(VIDIOC_QBUF, &record);
    }

private:
    const V4LDevice& device;
    v4l2_buffer record;
    bool queued = false;
};

v4l2_streamparm captureParameters() {
    v4l2_streamparm record{};
    record.type = captureType;
    return record;
}

} // namespace

struct KOVANTA_LOCAL VideoInputCaptureV4L::Impl {
    void openDevice(unsigned int number);
    void selectInput() const;
    v4l2_format getFormat() const;
    void wishFrameRate() const;
    void mapBuffers(const v4l2_pix_format& format);
    bool decodesJpeg() const;
    v4l2_buffer dequeue() const;

    V4LDevice device;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool isInit = false;
    std::uint64_t frameCount = 0;
    v4l2_requestbuffers bufferRequest{};
    std::uint32_t field = V4L2_FIELD_ANY;
    std::vector<V4LBuffer> buffers;
    PIXEL_FORMAT pixelFormat = PF_UNKNOWN;
    bool emulatedFormats = false;
    bool fullRange = false; // what the buffers hold
    Frac<unsigned int> wishedRate{0, 1};
    DriverCount driverCount;
    WaitLimit timeout{-1};
};

VideoInputCaptureV4L::VideoInputCaptureV4L()
    : impl(std::make_unique<Impl>()) {
    impl->bufferRequest.count = 2;
    impl->bufferRequest.type = captureType;
    impl->bufferRequest.memory = V4L2_MEMORY_MMAP;
}

VideoInputCaptureV4L::~VideoInputCaptureV4L() {
    try {
        VideoInputCaptureV4L::close();
    } catch (const std::exception& e) {
        std::cerr << "[VideoInputCaptureV4L::~VideoInputCaptureV4L]: Exception caught: " << e.what() << std::endl;
    }
}

void VideoInputCaptureV4L::init(unsigned int device, unsigned int width, unsigned int height, unsigned int) {
    if (impl->isInit)
        VideoInputCaptureV4L::close();
    impl->frameCount = 0;
    impl->driverCount = {};

    /// Until the stream runs, whatever was set up is released again.
    struct Undo {
        Impl& camera;
        ~Undo() {
            if (camera.isInit)
                return;
            camera.buffers.clear();
            camera.device.close();
        }
    } const undo{*impl};

    impl->openDevice(device);
    impl->selectInput();
    v4l2_format format = impl->getFormat();
    format.fmt.pix.width = width;
    format.fmt.pix.height = height;
    format.fmt.pix.field = impl->field;
    setFormat(format);
    format = impl->getFormat();
    int input = 0;
    impl->device.ioctl(VIDIOC_S_INPUT, &input);
    impl->wishFrameRate();
    impl->mapBuffers(format.fmt.pix);
    int type = captureType;
    request(impl->device, VIDIOC_STREAMON, &type, initName, "VIDIOC_STREAMON");
    impl->fullRange = impl->decodesJpeg();
    impl->width = format.fmt.pix.width;
    impl->height = format.fmt.pix.height;
    impl->bufferRequest.count = static_cast<std::uint32_t>(impl->buffers.size());
    impl->isInit = true;
}

void VideoInputCaptureV4L::Impl::openDevice(unsigned int number) {
    const std::string path = devicePath(number);
    device = V4LDevice(::open(path.c_str(), O_RDWR | O_CLOEXEC));
    if (!device.isOpen() || (emulatedFormats && device.emulate() == -1))
        throwSystemError(initName, "Cannot open ", path);

    v4l2_capability capability{};
    request(device, VIDIOC_QUERYCAP, &capability, initName, "VIDIOC_QUERYCAP");
    // The first field speaks for all nodes of the driver together, as far as the second one exists.
    const std::uint32_t capabilities =
        (capability.capabilities & V4L2_CAP_DEVICE_CAPS) != 0 ? capability.device_caps : capability.capabilities;
    constexpr std::uint32_t needed = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    if ((capabilities & needed) != needed)
        throwRuntimeError(initName, "Device does not support V4L2_CAP_VIDEO_CAPTURE and "
                                    "V4L2_CAP_STREAMING.");
}

/// Selects input 0 where another one is: each may have formats of its own, so before they are asked for.
void VideoInputCaptureV4L::Impl::selectInput() const {
    int input = 0;
    if (device.ioctl(VIDIOC_G_INPUT, &input) == -1 || input == 0)
        return;
    input = 0;
    device.ioctl(VIDIOC_S_INPUT, &input);
}

v4l2_format VideoInputCaptureV4L::Impl::getFormat() const {
    v4l2_format format{};
    format.type = captureType;
    request(device, VIDIOC_G_FMT, &format, initName, "VIDIOC_G_FMT");
    return format;
}

void VideoInputCaptureV4L::setFormat(v4l2_format format) {
    // Many drivers do not refuse a format that they lack but answer with one that they have.
    const auto accepts = [&](const FormatPreference& preference) {
        format.fmt.pix.pixelformat = preference.fourcc;
        // Of another size or format; a driver may take them for a wish for padding.
        format.fmt.pix.bytesperline = format.fmt.pix.sizeimage = 0;
        return impl->device.ioctl(VIDIOC_TRY_FMT, &format) != -1 && format.fmt.pix.pixelformat == preference.fourcc;
    };
    const FormatPreference* preference = fmtPrefs;
    while (preference->fourcc != 0 && !accepts(*preference))
        ++preference;
    if (preference->fourcc == 0)
        throwRuntimeError("VideoInputCaptureV4L::setFormat",
                          "Pixel format of camera is not supported. Uncle Brom wants YOU to implement it.");
    impl->pixelFormat = preference->format;
    request(impl->device, VIDIOC_S_FMT, &format, "VideoInputCaptureV4L::setFormat", "VIDIOC_S_FMT");
}

void VideoInputCaptureV4L::Impl::wishFrameRate() const {
    if (wishedRate.num == 0 || wishedRate.den == 0)
        return;
    v4l2_streamparm record = captureParameters();
    record.parm.capture.timeperframe = {wishedRate.den, wishedRate.num};
    device.ioctl(VIDIOC_S_PARM, &record); // a wish: getFrameRate() tells what became of it
}

void VideoInputCaptureV4L::Impl::mapBuffers(const v4l2_pix_format& format) {
    v4l2_requestbuffers granted = bufferRequest;
    request(device, VIDIOC_REQBUFS, &granted, initName, "VIDIOC_REQBUFS");
    for (std::uint32_t i = 0; i < granted.count; ++i) {
        v4l2_buffer record = mappedBuffer(i);
        request(device, VIDIOC_QUERYBUF, &record, initName, "VIDIOC_QUERYBUF");
        V4LBuffer& buffer = buffers.emplace_back(pixelFormat);
        if (buffer.mapping.map(device, record.m.offset, record.length) == -1)
            throwSystemError(initName, "mmap failed");
        if (!buffer.wrap(format))
            throwRuntimeError(initName, "Driver's buffer is smaller than a frame.");
        request(device, VIDIOC_QBUF, &record, initName, "VIDIOC_QBUF");
    }
}

bool VideoInputCaptureV4L::waitForFrame(unsigned int milliseconds) const {
    const WaitLimit limit{milliseconds};
    return !impl->device.isOpen() || FrameWait(impl->device, limit).await(true);
}

/// libv4l2 hands on a JPEG's samples, which have the full range, as they are.
bool VideoInputCaptureV4L::Impl::decodesJpeg() const {
    v4l2_format sent{};
    sent.type = captureType;
    if (!device.isEmulated() || pixelFormat != PF_YCC420P || device.systemIoctl(VIDIOC_G_FMT, &sent) == -1)
        return false;
    const std::uint32_t fourcc = sent.fmt.pix.pixelformat;
    return fourcc == V4L2_PIX_FMT_MJPEG || fourcc == V4L2_PIX_FMT_JPEG || fourcc == V4L2_PIX_FMT_PJPG;
}

v4l2_buffer VideoInputCaptureV4L::Impl::dequeue() const {
    const FrameWait wait(device, timeout);
    do {
        if (device.isOpen() && !wait.await(false))
            break;
        v4l2_buffer record = mappedBuffer(0);
        if (device.ioctl(VIDIOC_DQBUF, &record) != -1)
            return record;
        if (!device.isEmulated() || errno != EAGAIN) { // this one text has its brackets elsewhere
            const int error = errno;
            throw std::runtime_error(std::string("[VideoInputCaptureV4L]::read: Ioctl VIDIOC_DQBUF failed: ") +
                                     std::strerror(error) + ".");
        }
    } while (!wait.isOver()); // a picture that could not be decoded
    throwRuntimeError(readName, "No frame within the timeout.");
}

bool VideoInputCaptureV4L::read(Image<>& frame) {
    frame.size(impl->width, impl->height, true);
    const v4l2_buffer record = impl->dequeue();
    if (record.index >= impl->buffers.size())
        throwRuntimeError(readName, "Driver returned an unknown buffer.");
    Dequeued dequeued(impl->device, record);
    impl->driverCount.note(record);
    if (impl->fullRange)
        impl->buffers[record.index].toStudioRange();
    convertIm(frame, impl->buffers[record.index].image);
    if (dequeued.queue() == -1)
        throwSystemError(readName, "Ioctl VIDIOC_QBUF failed");
    frame.sequenceNumber = impl->frameCount++;
    return true;
}

void VideoInputCaptureV4L::close() {
    if (!impl->isInit)
        return;
    // Closing the descriptor ends the stream. All is released and the object closed before the first failure is told.
    impl->isInit = false;
    std::string failure;
    const auto note = [&failure](int result, const char* call) {
        const int error = errno;
        if (result == -1 && failure.empty())
            failure = errorText("VideoInputCaptureV4L::close", std::string(call) + " failed", error);
    };
    for (V4LBuffer& buffer : impl->buffers)
        note(buffer.mapping.unmap(), "munmap");
    impl->buffers.clear();
    note(impl->device.close(), "close");
    if (!failure.empty())
        throw std::runtime_error(failure);
}

long VideoInputCaptureV4L::seek(long, VideoPosId) {
    return tell();
}

long VideoInputCaptureV4L::tell() const {
    return static_cast<long>(impl->frameCount);
}

unsigned int VideoInputCaptureV4L::getWidth() const {
    return impl->width;
}

unsigned int VideoInputCaptureV4L::getHeight() const {
    return impl->height;
}

long VideoInputCaptureV4L::getLength() const {
    return -1;
}

std::int64_t VideoInputCaptureV4L::getTimeStamp() const {
    return impl->driverCount.timeStamp();
}

std::uint32_t VideoInputCaptureV4L::getDriverSequence() const {
    return impl->driverCount.sequence();
}

std::uint64_t VideoInputCaptureV4L::getLostFrames() const {
    return impl->driverCount.lost();
}

void VideoInputCaptureV4L::setTimeout(unsigned int milliseconds) {
    impl->timeout = milliseconds == 0 ? -1 : std::int64_t{milliseconds};
}

void VideoInputCaptureV4L::setFrameRate(Frac<unsigned int> rate) {
    impl->wishedRate = rate;
}

Frac<unsigned int> VideoInputCaptureV4L::getFrameRate() const {
    v4l2_streamparm record = captureParameters();
    const v4l2_captureparm& answer = record.parm.capture;
    if (impl->device.ioctl(VIDIOC_G_PARM, &record) == -1 || (answer.capability & V4L2_CAP_TIMEPERFRAME) == 0 ||
        answer.timeperframe.numerator == 0 || answer.timeperframe.denominator == 0)
        return {0, 1};
    return {answer.timeperframe.denominator, answer.timeperframe.numerator};
}

VideoInputCaptureV4L& VideoInputCaptureV4L::setEmulatedFormats(bool on) {
    impl->emulatedFormats = on;
    return *this;
}

void VideoInputCaptureV4L::setBufferCount(unsigned int count) {
    impl->bufferRequest.count = count;
}

void VideoInputCaptureV4L::setFieldOrder(FIELD_ORDER order) {
    switch (order) {
    case FO_ANY:
        impl->field = V4L2_FIELD_ANY;
        return;
    case FO_TOP:
        impl->field = V4L2_FIELD_TOP;
        return;
    }
    throwLogicError("VideoInputCaptureV4L::setFieldOrder", "Unknown field order.");
}

std::vector<std::string> VideoInputCaptureV4L::listDevs() {
    std::vector<std::string> entries;
    std::size_t wanted = 0;
    for (unsigned int number = 0; number < deviceNumbers; ++number) {
        const V4LDevice device(::open(devicePath(number).c_str(), O_RDONLY | O_CLOEXEC));
        v4l2_capability capability{};
        if (!device.isOpen()) {
            entries.emplace_back("none");
        } else if (device.ioctl(VIDIOC_QUERYCAP, &capability) != -1) {
            entries.push_back(text(capability.card) + " " + text(capability.bus_info));
            wanted = number + 1;
        }
    }
    entries.resize(std::min(entries.size(), wanted));
    return entries;
}

void VideoInputCaptureV4L::enumInputs() const {
    enumerate(impl->device, VIDIOC_ENUMINPUT, cameraInput(), [](const v4l2_input& input) {
        std::cout << "VideoInputCaptureV4L::enumInputs: Input: " << input.index << ": " << text(input.name)
                  << std::endl;
        return true;
    });
}

void VideoInputCaptureV4L::enumFmts() const {
    enumerate(impl->device, VIDIOC_ENUM_FMT, captureFormat(), [](const v4l2_fmtdesc& format) {
        std::cout << "[VideoInputCaptureV4L::enumFmts]: " << text(format.description) << std::endl;
        return true;
    });
}

std::string VideoInputCaptureV4L::fmt2string(unsigned int fourcc) const {
    std::string description = "unknown";
    enumerate(impl->device, VIDIOC_ENUM_FMT, captureFormat(), [&](const v4l2_fmtdesc& format) {
        if (format.pixelformat != fourcc)
            return true;
        description = text(format.description);
        return false;
    });
    return description;
}

std::string VideoInputCaptureV4L::std2string(unsigned long long standard) const {
    std::string names;
    enumerate(impl->device, VIDIOC_ENUMSTD, v4l2_standard{}, [&](const v4l2_standard& candidate) {
        if ((candidate.id & standard) != 0)
            names += text(candidate.name) + " ";
        return true;
    });
    return names;
}

} // namespace Ko
