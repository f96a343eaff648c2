// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_EXAMPLES_SUPPORT_PROGRESS_H
#define KOVANTA_EXAMPLES_SUPPORT_PROGRESS_H

#include <chrono>
#include <string>

namespace example {

/// A line that is written again and again, on a terminal only. The cursor waits at its beginning, so that whatever else
/// is said goes over it, and the end leaves nothing of it.
class Progress {
public:
    Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// Whether it is time to show something: some ten times a second.
    bool due();
    void show(const std::string& text);
    /// Call before others write whole lines: before a sink is closed, say.
    void clear();

private:
    const bool terminal;
    bool shown = false;
    std::chrono::steady_clock::time_point next;
};

} // namespace example

#endif
