// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOIN_V4LHANDLES_H
#define KOVANTA_SRC_VIDEOIN_V4LHANDLES_H

#include <cstddef>
#include <cstdint>
#include <utility>

namespace Ko {

/// The calls through which a device is spoken to: the system's own, or those of libv4l2, which stand in for them and
/// give formats that the device has not.
struct V4LCalls {
    int (*ioctl)(int, unsigned long, ...);
    void* (*mmap)(void*, std::size_t, int, int, int, std::int64_t);
    int (*munmap)(void*, std::size_t);
    int (*close)(int);
};

/// An open device, or none. Operations report failure as the system does: -1 and errno.
class V4LDevice {
public:
    V4LDevice();
    /// @param descriptor of the system's
    explicit V4LDevice(int descriptor);
    V4LDevice(V4LDevice&& src) noexcept
        : fd(std::exchange(src.fd, -1))
        , through(src.through) {}
    V4LDevice& operator=(V4LDevice&& src) noexcept {
        std::swap(fd, src.fd);
        std::swap(through, src.through);
        return *this;
    }
    ~V4LDevice() { close(); }

    /// Lets libv4l2 emulate formats from now on, and calls for frames fail (EAGAIN) instead of waiting.
    /// @return -1 and errno where it refuses
    int emulate();
    bool isEmulated() const;

    /// @return -1 when there is none
    int get() const { return fd; }
    bool isOpen() const { return fd >= 0; }
    /// Afterwards there is none, also when the system reports a failure. Closing none succeeds.
    int close() noexcept;
    /// A call to the device, repeated when a signal interrupts it.
    int ioctl(unsigned long request, void* record) const;
    /// The same, to the device itself where libv4l2 stands before it.
    int systemIoctl(unsigned long request, void* record) const;
    const V4LCalls& calls() const { return *through; }

private:
    int fd = -1;
    const V4LCalls* through;
};

/// A piece of a device's memory mapped into this process, or none.
class Mapping {
public:
    Mapping() = default;
    Mapping(Mapping&& src) noexcept
        : start(std::exchange(src.start, nullptr))
        , length(std::exchange(src.length, 0))
        , through(src.through) {}
    Mapping& operator=(Mapping&&) = delete;
    ~Mapping() { unmap(); }

    /// Maps for reading and writing. @return -1 and errno on failure
    int map(const V4LDevice& device, std::int64_t offset, std::size_t size);
    /// Afterwards there is none, also when the system reports a failure. Unmapping none succeeds.
    int unmap() noexcept;
    unsigned char* get() const { return static_cast<unsigned char*>(start); }
    std::size_t size() const { return length; }

private:
    void* start = nullptr;
    std::size_t length = 0;
    const V4LCalls* through = nullptr;
};

} // namespace Ko

#endif
