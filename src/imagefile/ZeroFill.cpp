// SPDX-License-Identifier: BSD-2-Clause
#include "imagefile/ZeroFill.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>

namespace Ko {

void zeroFill(void* bytes, std::size_t size) {
    constexpr std::size_t large = std::size_t{1} << 20;
    auto* const first = static_cast<unsigned char*>(bytes);
    if (size >= large) {
        const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
        const std::uintptr_t begin = (reinterpret_cast<std::uintptr_t>(first) + page - 1) & ~(page - 1);
        const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(first) + size) & ~(page - 1);
        auto* const pages = first + (begin - reinterpret_cast<std::uintptr_t>(first));
        // The system gives zeros for the pages it takes back, but not where an application's own operator new has
        // memory of another kind: a mark shows which it is.
        *pages = 1;
        if (madvise(pages, end - begin, MADV_DONTNEED) == 0 && *pages == 0) {
            std::memset(first, 0, static_cast<std::size_t>(pages - first));
            unsigned char* const rest = pages + (end - begin);
            std::memset(rest, 0, static_cast<std::size_t>(first + size - rest));
            return;
        }
    }
    std::memset(first, 0, size);
}

} // namespace Ko
