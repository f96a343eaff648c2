// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOIN_V4LHANDLES_H
#define KOVANTA_SRC_VIDEOIN_V4LHANDLES_H

#include <sys/types.h>

#include <cstddef>
#include <utility>

namespace Ko {

/// An open file descriptor, or none. Operations report failure as the system does: -1 and errno.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int descriptor)
        : fd(descriptor) {}
    Descriptor(Descriptor&& src) noexcept
        : fd(std::exchange(src.fd, -1)) {}
    Descriptor& operator=(Descriptor&& src) noexcept {
        std::swap(fd, src.fd);
        return *this;
    }
    ~Descriptor() { close(); }

    /// @return -1 when there is none
    int get() const { return fd; }
    bool isOpen() const { return fd >= 0; }
    /// Afterwards there is none, also when the system reports a failure. Closing none succeeds.
    int close() noexcept;
    /// A call to the device, repeated when a signal interrupts it.
    int ioctl(unsigned long request, void* record) const;

private:
    int fd = -1;
};

/// A piece of a device's memory mapped into this process, or none.
class Mapping {
public:
    Mapping() = default;
    Mapping(Mapping&& src) noexcept
        : start(std::exchange(src.start, nullptr))
        , length(std::exchange(src.length, 0)) {}
    Mapping& operator=(Mapping&&) = delete;
    ~Mapping() { unmap(); }

    /// Maps for reading and writing. @return -1 and errno on failure
    int map(const Descriptor& device, off_t offset, std::size_t size);
    /// Afterwards there is none, also when the system reports a failure. Unmapping none succeeds.
    int unmap() noexcept;
    unsigned char* get() const { return static_cast<unsigned char*>(start); }
    std::size_t size() const { return length; }

private:
    void* start = nullptr;
    std::size_t length = 0;
};

} // namespace Ko

#endif
