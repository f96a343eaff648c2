// SPDX-License-Identifier: BSD-2-Clause
#include "faults/FailingCall.h"

#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <exception>
#include <set>
#include <stdexcept>

namespace test {

namespace {

enum Ending { done = 0, refused = 3, silent = 4, unknown = 5 };

[[noreturn]] void child(const std::function<void()>& action) {
    alarm(60); // what waits for ever ends by a signal
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    raise(SIGSTOP);
    try {
        action();
    } catch (const std::exception& e) {
        _exit(std::strlen(e.what()) != 0 ? refused : silent);
    } catch (...) {
        _exit(unknown);
    }
    _exit(done);
}

std::string description(int status) {
    if (WIFSIGNALED(status))
        return std::string("killed: ") + strsignal(WTERMSIG(status));
    switch (WEXITSTATUS(status)) {
    case done:
        return "done";
    case refused:
        return "refused";
    case silent:
        return "refused without a reason";
    default:
        return "ended with " + std::to_string(WEXITSTATUS(status));
    }
}

} // namespace

FaultOutcome withFailingCall(const FailingCall& call, int nth, const std::function<void()>& action) {
    const pid_t process = fork();
    if (process < 0)
        throw std::runtime_error("fork failed");
    if (process == 0)
        child(action);
    int status = 0;
    waitpid(process, &status, 0);
    ptrace(PTRACE_SETOPTIONS, process, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE | PTRACE_O_EXITKILL);
    ptrace(PTRACE_SYSCALL, process, nullptr, nullptr);

    const auto counts = [&](auto number) {
        return std::find(call.numbers.begin(), call.numbers.end(), static_cast<long>(number)) != call.numbers.end();
    };
    std::set<pid_t> failing;
    for (;;) {
        const pid_t thread = waitpid(-1, &status, __WALL);
        if (thread < 0)
            throw std::runtime_error("the process is lost");
        if (WIFEXITED(status) || WIFSIGNALED(status)) {
            if (thread == process)
                return {nth <= 0, description(status)};
            continue;
        }
        long signal = 0;
        if (WSTOPSIG(status) == (SIGTRAP | 0x80)) {
            __ptrace_syscall_info info{};
            ptrace(PTRACE_GET_SYSCALL_INFO, thread, sizeof info, &info);
            if (info.op == PTRACE_SYSCALL_INFO_ENTRY && counts(info.entry.nr) && --nth == 0) {
                ptrace(PTRACE_POKEUSER, thread, offsetof(user_regs_struct, orig_rax), -1L);
                failing.insert(thread);
            } else if (info.op == PTRACE_SYSCALL_INFO_EXIT && failing.erase(thread) != 0) {
                ptrace(PTRACE_POKEUSER, thread, offsetof(user_regs_struct, rax), long{-call.error});
            }
        } else if (WSTOPSIG(status) != SIGTRAP && WSTOPSIG(status) != SIGSTOP) {
            signal = WSTOPSIG(status);
        }
        ptrace(PTRACE_SYSCALL, thread, nullptr, signal);
    }
}

} // namespace test
