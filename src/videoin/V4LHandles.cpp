// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/V4LHandles.h"

#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>

namespace Ko {

int Descriptor::close() noexcept {
    const int closing = std::exchange(fd, -1);
    return closing < 0 ? 0 : ::close(closing);
}

int Descriptor::ioctl(unsigned long request, void* record) const {
    int result = 0;
    do
        result = ::ioctl(fd, request, record);
    while (result == -1 && errno == EINTR);
    return result;
}

int Mapping::map(const Descriptor& device, off_t offset, std::size_t size) {
    void* const mapped = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, device.get(), offset);
    if (mapped == MAP_FAILED)
        return -1;
    start = mapped;
    length = size;
    return 0;
}

int Mapping::unmap() noexcept {
    void* const unmapping = std::exchange(start, nullptr);
    return unmapping ? ::munmap(unmapping, std::exchange(length, 0)) : 0;
}

} // namespace Ko
