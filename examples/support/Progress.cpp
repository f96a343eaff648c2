// SPDX-License-Identifier: BSD-2-Clause
#include "Progress.h"

#include <unistd.h>

#include <iostream>

namespace example {

namespace {

constexpr const char* clearToEnd = "\033[K";

} // namespace

Progress::Progress()
    : terminal(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
    clear();
}

bool Progress::due() {
    const auto now = std::chrono::steady_clock::now();
    if (!terminal || now < next)
        return false;
    next = now + std::chrono::milliseconds(100);
    return true;
}

void Progress::show(const std::string& text) {
    if (!terminal)
        return;
    std::cerr << text + clearToEnd + "\r" << std::flush;
    shown = true;
}

void Progress::clear() {
    if (shown)
        std::cerr << clearToEnd << std::flush;
    shown = false;
}

} // namespace example
