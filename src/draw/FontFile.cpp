// SPDX-License-Identifier: BSD-2-Clause
#include "draw/FontFile.h"

#include "util/Descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace Ko {

FontFile::FontFile(const std::string& name) {
    constexpr off_t most = off_t{1} << 30;
    const Descriptor file(name, O_RDONLY);
    struct stat status {};
    if (!file || fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size <= 0 ||
        status.st_size > most)
        return;
    const auto wanted = static_cast<unsigned long>(status.st_size);
    std::unique_ptr<unsigned char[]> read(new unsigned char[wanted]);
    unsigned long held = 0;
    while (held < wanted) {
        const ssize_t n = ::read(file.number(), read.get() + held, wanted - held);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return;
        if (n == 0)
            break; // it has shrunk; what is there may still be a font
        held += static_cast<unsigned long>(n);
    }
    bytes = std::move(read);
    size = held;
}

} // namespace Ko
