#include "videoin/FakeCamera.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace fake {

std::map<unsigned int, Camera> cameras;
std::vector<Fault> faults;
std::vector<std::string> calls;
v4l2_format lastFormat;

namespace {

std::uint32_t lastStride = 0;

const char* const memoryName = "kovanta-fake-camera";

struct Device {
    Camera camera;
    v4l2_pix_format format{};
    std::uint32_t bufferCount = 0;
    std::uint32_t bufferLength = 0;
    std::deque<std::uint32_t> queue;
    unsigned int frames = 0;
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

/// Records the call. @return whether it is to fail; errno is set then
bool fails(const std::string& name) {
    calls.push_back(name);
    const auto nth = std::count(calls.begin(), calls.end(), name);
    for (const Fault& fault : faults)
        if (fault.call == name && fault.nth == nth) {
            errno = fault.error;
            return true;
        }
    return false;
}

int refuse(int error) {
    errno = error;
    return -1;
}

template <std::size_t N>
void setText(__u8 (&field)[N], const std::string& text) {
    std::memset(field, 0, N);
    std::memcpy(field, text.data(), std::min(N, text.size()));
}

std::uint32_t pageRounded(std::uint32_t length) {
    return (length + 4095u) & ~4095u;
}

bool isPacked(const v4l2_pix_format& format) {
    return format.pixelformat == V4L2_PIX_FMT_YUYV;
}

std::uint32_t strideOf(const Camera& camera, const v4l2_pix_format& format) {
    return format.width * (isPacked(format) ? 2 : 1) + camera.padding;
}

void adjust(const Camera& camera, v4l2_pix_format& format) {
    format.width = std::min(format.width, camera.maxWidth);
    format.height = std::min(format.height, camera.maxHeight);
    const std::uint32_t stride = strideOf(camera, format);
    format.bytesperline = camera.tellsStride ? stride : 0;
    format.sizeimage = isPacked(format) ? stride * format.height : stride * format.height * 3 / 2;
}

int tryFormat(const Camera& camera, v4l2_pix_format& format) {
    const auto& formats = camera.formats;
    if (std::find(formats.begin(), formats.end(), format.pixelformat) == formats.end()) {
        if (!camera.substitutes)
            return refuse(EINVAL);
        format.pixelformat = formats.front();
    }
    adjust(camera, format);
    return 0;
}

int dequeue(Device& device, int fd, v4l2_buffer& buffer) {
    if (device.queue.empty())
        return refuse(EDEADLK); // a real driver would wait for ever
    const std::uint32_t index = device.queue.front();
    device.queue.pop_front();
    buffer.index = index + device.camera.reportedIndex;
    const camera::Frame frame = frameNumber(device.frames++);
    const std::size_t length = std::min<std::size_t>(frame.bytes.size(), device.bufferLength);
    return ::pwrite(fd, frame.bytes.data(), length, static_cast<off_t>(index * pageRounded(device.bufferLength))) < 0
               ? -1
               : 0;
}

int enumerated(const Camera& camera, std::uint32_t index, std::uint32_t count) {
    return index < count || camera.endless ? 0 : refuse(EINVAL);
}

int control(int fd, Device& device, unsigned long request, void* argument) {
    const Camera& camera = device.camera;
    auto& format = *static_cast<v4l2_format*>(argument);
    auto& buffer = *static_cast<v4l2_buffer*>(argument);
    switch (request) {
    case VIDIOC_QUERYCAP: {
        if (fails("QUERYCAP"))
            return -1;
        auto& capability = *static_cast<v4l2_capability*>(argument);
        capability.capabilities = camera.capabilities;
        capability.device_caps = camera.deviceCapabilities;
        setText(capability.card, camera.card);
        setText(capability.bus_info, camera.bus);
        return 0;
    }
    case VIDIOC_G_FMT:
        if (fails("G_FMT"))
            return -1;
        format.fmt.pix = device.format;
        return 0;
    case VIDIOC_TRY_FMT:
        return fails("TRY_FMT") ? -1 : tryFormat(camera, format.fmt.pix);
    case VIDIOC_S_FMT:
        if (fails("S_FMT"))
            return -1;
        lastFormat = format;
        lastStride = strideOf(camera, format.fmt.pix);
        device.format = format.fmt.pix;
        return 0;
    case VIDIOC_S_INPUT:
        return fails("S_INPUT " + std::to_string(*static_cast<int*>(argument))) ? -1 : 0;
    case VIDIOC_REQBUFS: {
        auto& wish = *static_cast<v4l2_requestbuffers*>(argument);
        if (fails("REQBUFS"))
            return -1;
        calls.back() += " " + std::to_string(wish.count);
        wish.count = std::min(wish.count, camera.maxBuffers);
        device.bufferCount = wish.count;
        device.bufferLength = device.format.sizeimage - camera.missingBytes;
        return ::ftruncate(fd, off_t{pageRounded(device.bufferLength)} * wish.count);
    }
    case VIDIOC_QUERYBUF:
        if (fails("QUERYBUF"))
            return -1;
        buffer.length = device.bufferLength;
        buffer.m.offset = buffer.index * pageRounded(device.bufferLength);
        return buffer.index < device.bufferCount ? 0 : refuse(EINVAL);
    case VIDIOC_QBUF:
        if (fails("QBUF"))
            return -1;
        device.queue.push_back(buffer.index);
        return 0;
    case VIDIOC_DQBUF:
        return fails("DQBUF") ? -1 : dequeue(device, fd, buffer);
    case VIDIOC_STREAMON:
        return fails("STREAMON") ? -1 : device.bufferCount == 0 ? refuse(EINVAL) : 0;
    case VIDIOC_ENUMINPUT: {
        auto& input = *static_cast<v4l2_input*>(argument);
        setText(input.name, input.type == V4L2_INPUT_TYPE_CAMERA ? "Camera " + std::to_string(input.index) : "?");
        return enumerated(camera, input.index, 2);
    }
    case VIDIOC_ENUM_FMT: {
        auto& description = *static_cast<v4l2_fmtdesc*>(argument);
        const auto count = static_cast<std::uint32_t>(camera.formats.size());
        description.pixelformat = camera.formats[std::min(description.index, count - 1)];
        setText(description.description, "Format " + std::to_string(description.index));
        return enumerated(camera, description.index, count);
    }
    case VIDIOC_ENUMSTD: {
        auto& standard = *static_cast<v4l2_standard*>(argument);
        const v4l2_std_id ids[] = {V4L2_STD_PAL, V4L2_STD_NTSC, V4L2_STD_PAL_B};
        const char* const names[] = {"PAL", "NTSC", "PAL-B"};
        const std::uint32_t which = std::min(standard.index, 2u);
        standard.id = ids[which];
        setText(standard.name, names[which]);
        return enumerated(camera, standard.index, 3);
    }
    default:
        calls.push_back("unexpected request");
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
    auto* const device = devices[fd] = new Device;
    device->camera = found->second;
    device->format.width = 640;
    device->format.height = 360;
    device->format.pixelformat = device->camera.formats.front();
    adjust(device->camera, device->format);
    return fd;
}

int openAny(const char* path, int flags, mode_t mode) {
    constexpr std::size_t prefixLength = 10;
    if (std::strncmp(path, "/dev/video", prefixLength) == 0)
        return openCamera(path + prefixLength, flags);
    return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
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
    camera::Frame frame(format.pixelformat, format.width, format.height, lastStride);
    frame.fill(n);
    return frame;
}

int openDescriptors() {
    int count = 0;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        count += std::filesystem::read_symlink(entry, ignored).string().find(memoryName) != std::string::npos;
    return count;
}

int liveMappings() {
    int count = 0;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        count += line.find(memoryName) != std::string::npos;
    return count;
}

} // namespace fake

extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return fake::openAny(path, flags, mode);
}

int open64(const char* path, int flags, ...) __attribute__((alias("open")));

int ioctl(int fd, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    fake::Device* const device = fake::deviceOf(fd);
    if (!device)
        return static_cast<int>(::syscall(SYS_ioctl, fd, request, argument));
    return fake::control(fd, *device, request, argument);
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
}
