// SPDX-License-Identifier: BSD-2-Clause
#include "util/Descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace Ko {

namespace {

int openName(const std::string& name, int flags) {
    if (name.find('\0') != std::string::npos) {
        errno = EINVAL;
        return -1;
    }
    constexpr mode_t readableAndWritable = 0666; // less what the process's mask takes away
    return ::open(name.c_str(), flags | O_CLOEXEC, readableAndWritable);
}

} // namespace

Descriptor::Descriptor(const std::string& name, int flags)
    : descriptor(openName(name, flags)) {}

Descriptor::Descriptor(Descriptor&& other) noexcept
    : descriptor(other.release()) {}

Descriptor::~Descriptor() {
    if (descriptor >= 0)
        ::close(descriptor);
}

int Descriptor::release() {
    return std::exchange(descriptor, -1);
}

} // namespace Ko
