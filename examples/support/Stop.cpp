// SPDX-License-Identifier: BSD-2-Clause
#include "Stop.h"

#include <atomic>
#include <csignal>
#include <initializer_list>

namespace example {

namespace {

std::atomic<int> caught{0}; // any thread may be the one that the signal meets
static_assert(std::atomic<int>::is_always_lock_free);

void remember(int number) {
    caught = number;
}

} // namespace

void catchStops() {
    struct sigaction action {};
    action.sa_handler = remember;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before {};
        sigaction(number, &action, &before);
        if (number == SIGHUP && before.sa_handler == SIG_IGN) // nohup
            sigaction(number, &before, nullptr);
    }
}

bool stopAsked() {
    return caught != 0;
}

int stopSignal() {
    return caught;
}

} // namespace example
