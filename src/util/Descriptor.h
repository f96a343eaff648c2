// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_UTIL_DESCRIPTOR_H
#define KOVANTA_SRC_UTIL_DESCRIPTOR_H

#include <string>

namespace Ko {

/// An open file of the system's, closed with this and, unlike stdio's, never handed on to a program that another
/// thread starts.
class Descriptor {
public:
    /// Opens a file, for which open()'s flags say how; errno says why that failed. A name that holds a zero byte is no
    /// name (EINVAL): the system would see the beginning only.
    Descriptor(const std::string& name, int flags);
    Descriptor(Descriptor&& other) noexcept;
    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    explicit operator bool() const { return descriptor >= 0; }
    int number() const { return descriptor; }
    /// Hands the descriptor over to the caller.
    int release();

private:
    int descriptor;
};

} // namespace Ko

#endif
