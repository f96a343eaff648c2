// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_TESTS_FAULTS_FAILINGCALL_H
#define KOVANTA_TESTS_FAULTS_FAILINGCALL_H

#include <functional>
#include <string>
#include <vector>

// Runs an action in a process of its own, one of whose system calls fails, whoever makes it: the library, what it is
// built on, or the C library within.
namespace test {

struct FailingCall {
    const char* name;
    std::vector<long> numbers; ///< Of the calls that count as this one, SYS_...
    int error;
};

struct FaultOutcome {
    bool reached;      ///< Whether there were that many calls.
    std::string ended; ///< "done", "refused" (by a std::exception that says why), or what is wrong.
};

/// The n-th such call, from 1, of the action's process and all its threads fails without effect.
FaultOutcome withFailingCall(const FailingCall& call, int nth, const std::function<void()>& action);

} // namespace test

#endif
