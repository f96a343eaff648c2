// SPDX-License-Identifier: BSD-2-Clause
#include "image/CacheSize.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace Ko {

namespace {

/// What a file of the kernel's like "32768K" says; 0 without one. Nothing here may fail or ask for memory: conversions
/// come by.
std::size_t kibibytesIn(const char* file) noexcept {
    const int descriptor = open(file, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return 0;
    char text[32] = {};
    const ssize_t length = read(descriptor, text, sizeof(text) - 1);
    close(descriptor);
    char* unit = text;
    const unsigned long value = length > 0 ? std::strtoul(text, &unit, 10) : 0;
    return *unit == 'K' ? value : 0;
}

std::size_t askForLargest() noexcept {
    // The C library adds up the caches of all core complexes on some processors, so the kernel is asked first.
    std::size_t largest = 0;
    for (int i = 0; i < 8; ++i) {
        char file[64];
        std::snprintf(file, sizeof(file), "/sys/devices/system/cpu/cpu0/cache/index%d/size", i);
        const std::size_t size = kibibytesIn(file);
        if (size == 0)
            break;
        largest = std::max(largest, size * 1024);
    }
    if (largest == 0)
        largest =
            static_cast<std::size_t>(std::max({sysconf(_SC_LEVEL3_CACHE_SIZE), sysconf(_SC_LEVEL2_CACHE_SIZE), 0L}));
    return largest == 0 ? SIZE_MAX : largest;
}

} // namespace

std::size_t largestCache() noexcept {
    static const std::size_t size = askForLargest();
    return size;
}

} // namespace Ko
