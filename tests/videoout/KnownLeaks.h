// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_TESTS_VIDEOOUT_KNOWNLEAKS_H
#define KOVANTA_TESTS_VIDEOOUT_KNOWNLEAKS_H

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

/// What is allocated while one lives may leak: after its server is gone, SDL gives up the connection's memory, and
/// libx265 keeps some of its own.
class LeaksAllowed {
public:
#if defined(__SANITIZE_ADDRESS__)
    LeaksAllowed() {
        __lsan_disable();
    }
    ~LeaksAllowed() {
        __lsan_enable();
    }
#else
    LeaksAllowed() {} // NOLINT(modernize-use-equals-default): not trivial, or it would count as unused
#endif
    LeaksAllowed(const LeaksAllowed&) = delete;
    LeaksAllowed& operator=(const LeaksAllowed&) = delete;
};

#endif
