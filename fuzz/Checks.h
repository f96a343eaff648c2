// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_FUZZ_CHECKS_H
#define KOVANTA_FUZZ_CHECKS_H

#include "support/TestImages.h"

#include <cstddef>
#include <string>

namespace fuzz {

/// Ends the process with a line on standard error, which is a finding.
[[noreturn]] void fail(const std::string& what);

inline void require(bool condition, const char* what) {
    if (!condition)
        fail(what);
}

/// While it lives, requests of the C++ code for more bytes than this at once end in std::bad_alloc.
class AllocationLimit {
public:
    explicit AllocationLimit(std::size_t most);
    ~AllocationLimit();
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;
};

/// Fails when it ends with more open descriptors than it began with.
class DescriptorWatch {
public:
    DescriptorWatch();
    ~DescriptorWatch();
    DescriptorWatch(const DescriptorWatch&) = delete;
    DescriptorWatch& operator=(const DescriptorWatch&) = delete;

private:
    std::size_t before;
};

/// The first difference between two images, and fails where there is one.
void requireSame(const test::Image& im, const test::Image& expected, const char* what);

} // namespace fuzz

#endif
