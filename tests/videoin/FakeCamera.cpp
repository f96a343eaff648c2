// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/FakeCamera.h"

#include <fcntl.h>
#include <libv4l2.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <deque>

namespace fake {

std::map<unsigned int, Camera> cameras;
std::vector<Fault> faults;
std::vector<std::string> calls;
v4l2_format lastFormat;

namespace {

std::uint32_t lastStride = 0;
const char* through = ""; ///< Comes before the names of calls: "v4l2 " while they come through libv4l2.

struct ThroughLibv4l2 {
    ThroughLibv4l2() { through = "v4l2 "; }
    ~ThroughLibv4l2() { through = ""; }
};

struct Device : Camera {
    explicit Device(const Camera& camera)
        : Camera(camera) {
        format.bytesperline = staleStride;
    }
    v4l2_pix_format format{};
    std::uint32_t bufferCount = 0, bufferLength = 0;
    std::deque<std::uint32_t> queue;
    unsigned int frames = 0;
    bool emulated = false;

    std::uint32_t offset(std::uint32_t buffer) const { return buffer * ((bufferLength + 4095u) & ~4095u); }
};

// Plain data: the calls below come before the first constructor and after the last destructor of this program too.
Device* devices[1024]; // by descriptor
void* mappings[256];

Device* deviceOf(int fd) {
    return fd >= 0 && static_cast<std::size_t>(fd) < std::size(devices) ? devices[fd] : nullptr;
}

/// Replaces one entry of the mappings by another. @return whether there was one; null marks the free ones
bool replaceMapping(void* entry, void* replacement) {
    void** const found = std::find(std::begin(mappings), std::end(mappings), entry);
    if (found == std::end(mappings))
        return false;
    *found = replacement;
    return true;
}

int refuse(int error) {
    errno = error;
    return -1;
}

/// Records the call. @return whether it is to fail; errno is set then
bool fails(const std::string& call) {
    const std::string name = through + call;
    calls.push_back(name);
    const auto nth = std::count(calls.begin(), calls.end(), name);
    for (const Fault& fault : faults)
        if (fault.call == name && (fault.nth == nth || fault.nth == always))
            return refuse(fault.error);
    return false;
}

template <std::size_t N>
void setText(__u8 (&field)[N], const std::string& text) {
    std::memset(field, 0, N);
    std::memcpy(field, text.data(), std::min(N, text.size()));
}

/// @return the bytes of a row
std::uint32_t adjust(const Camera& camera, v4l2_pix_format& format) {
    const bool packed = format.pixelformat == V4L2_PIX_FMT_YUYV;
    format.width = std::min(format.width, camera.maxWidth);
    const std::uint32_t stride = std::max(format.width * (packed ? 2 : 1) + camera.padding, format.bytesperline);
    format.bytesperline = camera.tellsStride ? stride : 0;
    format.sizeimage = packed ? stride * format.height : stride * format.height * 3 / 2;
    return stride;
}

int dequeue(Device& device, int fd, v4l2_buffer& buffer) {
    if (device.queue.empty() || (*through != 0 && (::fcntl(fd, F_GETFL) & O_NONBLOCK) == 0))
        return refuse(EDEADLK); // a real driver would wait for ever, libv4l2 where a picture cannot be decoded
    const std::uint32_t index = device.queue.front();
    device.queue.pop_front();
    buffer.index = index + device.reportedIndex;
    buffer.sequence = device.sequences[device.frames % device.sequences.size()];
    buffer.timestamp = {device.seconds[device.frames % device.seconds.size()], 250000};
    const camera::Frame frame = frameNumber(device.frames++);
    const std::size_t length = std::min<std::size_t>(frame.bytes.size(), device.bufferLength);
    return ::pwrite(fd, frame.bytes.data(), length, off_t{device.offset(index)}) < 0 ? -1 : 0;
}

int control(int fd, Device& device, unsigned long request, void* argument) {
    static const std::map<unsigned long, const char*> names = {
        {VIDIOC_QUERYCAP, "QUERYCAP"}, {VIDIOC_G_FMT, "G_FMT"},     {VIDIOC_TRY_FMT, "TRY_FMT"},
        {VIDIOC_S_FMT, "S_FMT"},       {VIDIOC_S_INPUT, "S_INPUT"}, {VIDIOC_REQBUFS, "REQBUFS"},
        {VIDIOC_QUERYBUF, "QUERYBUF"}, {VIDIOC_QBUF, "QBUF"},       {VIDIOC_DQBUF, "DQBUF"},
        {VIDIOC_STREAMON, "STREAMON"}, {VIDIOC_ENUMINPUT, "enum"},  {VIDIOC_ENUM_FMT, "enum"},
        {VIDIOC_ENUMSTD, "enum"},      {VIDIOC_G_INPUT, "G_INPUT"}, {VIDIOC_G_PARM, "G_PARM"},
        {VIDIOC_S_PARM, "S_PARM"}};
    const auto name = names.find(request);
    if (fails(name == names.end() ? "unexpected request" : name->second))
        return -1;
    auto& format = static_cast<v4l2_format*>(argument)->fmt.pix;
    auto& buffer = *static_cast<v4l2_buffer*>(argument);
    const auto enumerated = [&device](std::uint32_t index, std::size_t count) {
        return index < count || device.endless ? 0 : refuse(EINVAL);
    };
    switch (request) {
    case VIDIOC_QUERYCAP: {
        auto& capability = *static_cast<v4l2_capability*>(argument);
        capability.capabilities = device.capabilities;
        capability.device_caps = device.deviceCapabilities;
        setText(capability.card, device.card);
        setText(capability.bus_info, device.bus);
        return 0;
    }
    case VIDIOC_G_FMT:
        format = device.format;
        if (device.emulated && *through == 0)
            format.pixelformat = device.formats.front();
        return 0;
    case VIDIOC_TRY_FMT:
        if (std::count(device.formats.begin(), device.formats.end(), format.pixelformat) == 0) {
            if (!device.substitutes)
                return refuse(EINVAL);
            format.pixelformat = device.formats.front();
        }
        adjust(device, format);
        return 0;
    case VIDIOC_S_FMT:
        lastFormat = *static_cast<v4l2_format*>(argument);
        lastStride = adjust(device, format);
        device.format = format;
        return 0;
    case VIDIOC_G_INPUT:
        *static_cast<int*>(argument) = device.input;
        return 0;
    case VIDIOC_S_INPUT:
        calls.back() += " " + std::to_string(*static_cast<int*>(argument));
        return 0;
    case VIDIOC_S_PARM:
        device.rate.timeperframe = static_cast<v4l2_streamparm*>(argument)->parm.capture.timeperframe;
        return 0;
    case VIDIOC_G_PARM:
        static_cast<v4l2_streamparm*>(argument)->parm.capture = device.rate;
        return 0;
    case VIDIOC_REQBUFS: {
        auto& wish = *static_cast<v4l2_requestbuffers*>(argument);
        calls.back() += " " + std::to_string(wish.count);
        device.bufferCount = wish.count = std::min(wish.count, device.maxBuffers);
        device.bufferLength = device.format.sizeimage - device.missingBytes;
        return ::ftruncate(fd, off_t{device.offset(wish.count)});
    }
    case VIDIOC_QUERYBUF:
        buffer.length = device.bufferLength;
        buffer.m.offset = device.offset(buffer.index);
        return buffer.index < device.bufferCount ? 0 : refuse(EINVAL);
    case VIDIOC_QBUF:
        device.queue.push_back(buffer.index);
        return 0;
    case VIDIOC_DQBUF:
        return dequeue(device, fd, buffer);
    case VIDIOC_STREAMON:
        return device.bufferCount == 0 ? refuse(EINVAL) : 0;
    case VIDIOC_ENUMINPUT: {
        auto& input = *static_cast<v4l2_input*>(argument);
        setText(input.name, input.type == V4L2_INPUT_TYPE_CAMERA ? "Camera " + std::to_string(input.index) : "?");
        input.type = V4L2_INPUT_TYPE_TUNER;
        return enumerated(input.index, 2);
    }
    case VIDIOC_ENUM_FMT: {
        auto& description = *static_cast<v4l2_fmtdesc*>(argument);
        description.pixelformat = device.formats[description.index % device.formats.size()];
        setText(description.description, "Format " + std::to_string(description.index));
        return enumerated(description.index, device.formats.size());
    }
    case VIDIOC_ENUMSTD: {
        auto& standard = *static_cast<v4l2_standard*>(argument);
        const std::pair<v4l2_std_id, const char*> standards[] = {
            {V4L2_STD_PAL, "PAL"}, {V4L2_STD_NTSC, "NTSC"}, {V4L2_STD_PAL_B, "PAL-B"}};
        standard.id = standards[standard.index % 3].first;
        setText(standard.name, standards[standard.index % 3].second);
        return enumerated(standard.index, 3);
    }
    default:
        return refuse(ENOTTY);
    }
}

int openCamera(const std::string& number, int flags) {
    const bool failed = fails("open");
    calls.back() += " " + number + ((flags & O_ACCMODE) == O_RDONLY ? " read-only" : "");
    if (failed)
        return -1;
    const auto found = cameras.find(static_cast<unsigned int>(std::stoul(number)));
    if (found == cameras.end())
        return refuse(ENOENT);
    const int fd = ::memfd_create(memoryName, 0);
    devices[fd] = new Device(found->second);
    return fd;
}

} // namespace

void reset() {
    cameras.clear();
    faults.clear();
    calls.clear();
    lastFormat = {};
}

camera::Frame frameNumber(unsigned int n) {
    const v4l2_pix_format& format = lastFormat.fmt.pix;
    camera::Frame frame{format.pixelformat, format.width, format.height, lastStride};
    frame.fill(n);
    return frame;
}

} // namespace fake

extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    constexpr std::size_t prefixLength = 10;
    if (std::strncmp(path, "/dev/video", prefixLength) == 0)
        return fake::openCamera(path + prefixLength, flags);
    return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

int open64(const char* path, int flags, ...) __attribute__((alias("open")));

int ioctl(int fd, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    fake::Device* const device = fake::deviceOf(fd);
    return device ? fake::control(fd, *device, request, argument)
                  : static_cast<int>(::syscall(SYS_ioctl, fd, request, argument));
}

// By another name, since the header has an inline definition of its own, or says that it reads nothing there.
int fakePoll(pollfd* waiting, nfds_t count, int timeout) __asm__("poll");
int fakePoll(pollfd* waiting, nfds_t count, int timeout) {
    fake::Device* const device = count == 1 ? fake::deviceOf(waiting->fd) : nullptr;
    if (device && fake::fails("poll"))
        return -1;
    if (device && device->silent) // the memory file would always be ready
        return static_cast<int>(::syscall(SYS_poll, nullptr, 0, timeout));
    return static_cast<int>(::syscall(SYS_poll, waiting, count, timeout));
}

void* mmap(void* address, size_t length, int protection, int flags, int fd, off_t offset) noexcept {
    const bool ours = fake::deviceOf(fd) != nullptr;
    if (ours && fake::fails("mmap"))
        return MAP_FAILED;
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    void* const start = reinterpret_cast<void*>(::syscall(SYS_mmap, address, length, protection, flags, fd, offset));
    if (ours && start != MAP_FAILED)
        fake::replaceMapping(nullptr, start);
    return start;
}

int munmap(void* address, size_t length) noexcept {
    const int result = static_cast<int>(::syscall(SYS_munmap, address, length));
    return address && fake::replaceMapping(address, nullptr) && fake::fails("munmap") ? -1 : result;
}

int close(int fd) {
    const int result = static_cast<int>(::syscall(SYS_close, fd));
    fake::Device* const device = fake::deviceOf(fd);
    if (!device)
        return result;
    delete device;
    fake::devices[fd] = nullptr;
    return fake::fails("close") ? -1 : result;
}

// libv4l2's: planar 4:2:0 of whatever there is.

int v4l2_fd_open(int fd, int) {
    if (fake::fails("v4l2_fd_open"))
        return -1;
    fake::devices[fd]->emulated = true;
    fake::devices[fd]->formats.push_back(V4L2_PIX_FMT_YUV420);
    return fd;
}

int v4l2_ioctl(int fd, unsigned long request, ...) {
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    const fake::ThroughLibv4l2 passing;
    return ioctl(fd, request, argument);
}

void* v4l2_mmap(void* address, size_t length, int protection, int flags, int fd, int64_t offset) {
    const fake::ThroughLibv4l2 passing;
    return mmap(address, length, protection, flags, fd, offset);
}

int v4l2_munmap(void* address, size_t length) {
    const fake::ThroughLibv4l2 passing;
    return munmap(address, length);
}

int v4l2_close(int fd) {
    const fake::ThroughLibv4l2 passing;
    return close(fd);
}
}
