// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/V4LHandles.h"

#include <fcntl.h>
#include <libv4l2.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>

namespace Ko {

namespace {

constexpr V4LCalls systemCalls{::ioctl, ::mmap, ::munmap, ::close};
constexpr V4LCalls emulatingCalls{::v4l2_ioctl, ::v4l2_mmap, ::v4l2_munmap, ::v4l2_close};

int repeated(const V4LCalls& calls, int fd, unsigned long request, void* record) {
    int result = 0;
    do
        result = calls.ioctl(fd, request, record);
    while (result == -1 && errno == EINTR);
    return result;
}

} // namespace

V4LDevice::V4LDevice()
    : V4LDevice(-1) {}

V4LDevice::V4LDevice(int descriptor)
    : fd(descriptor)
    , through(&systemCalls) {}

int V4LDevice::emulate() {
    // Where a picture cannot be decoded libv4l2 waits for the next one, which is for the caller to do.
    if (::fcntl(fd, F_SETFL, O_NONBLOCK) == -1 || ::v4l2_fd_open(fd, 0) == -1)
        return -1;
    through = &emulatingCalls;
    return 0;
}

bool V4LDevice::isEmulated() const {
    return through == &emulatingCalls;
}

int V4LDevice::close() noexcept {
    const int closing = std::exchange(fd, -1);
    return closing < 0 ? 0 : through->close(closing);
}

int V4LDevice::ioctl(unsigned long request, void* record) const {
    return repeated(*through, fd, request, record);
}

int V4LDevice::systemIoctl(unsigned long request, void* record) const {
    return repeated(systemCalls, fd, request, record);
}

int Mapping::map(const V4LDevice& device, std::int64_t offset, std::size_t size) {
    void* const mapped = device.calls().mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, device.get(), offset);
    if (mapped == MAP_FAILED)
        return -1;
    start = mapped;
    length = size;
    through = &device.calls();
    return 0;
}

int Mapping::unmap() noexcept {
    void* const unmapping = std::exchange(start, nullptr);
    return unmapping ? through->munmap(unmapping, std::exchange(length, 0)) : 0;
}

} // namespace Ko
