// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_BENCH_CONTEST_H
#define KOVANTA_BENCH_CONTEST_H

#include <functional>
#include <string>
#include <vector>

namespace bench {

enum class Side { ours, peer, bound };

/// One way to do a job.
struct Contender {
    std::string name;
    Side side;
    std::function<void()> run;
};

/// One job, done by several.
struct Contest {
    std::string name;
    double units; ///< What one run handles: pixels, frames.
    std::vector<Contender> contenders;
};

/// How the rates are shown.
struct Unit {
    std::string name;
    double scale;       ///< Units of a contest in one shown.
    bool processorTime; ///< Time of the processor instead of the clock's, for what runs in one thread.
};

/// Runs all contenders in one interleaved run of Google Benchmark and prints a table of medians: units per second, and
/// the ratio to the best peer of the same contest. With --table=FILE the figures also go there, one a line: contest,
/// contender, side, units per second, separated by tabs. With --fastest the shortest times replace the medians, which
/// on a busy machine is the steadier figure.
int runContests(int argc, char** argv, const std::vector<Contest>& contests, const Unit& unit);

} // namespace bench

#endif
