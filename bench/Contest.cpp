// SPDX-License-Identifier: BSD-2-Clause
#include "Contest.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>

namespace bench {

namespace {

std::string processorName() {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);)
        if (line.compare(0, 10, "model name") == 0)
            return line.substr(line.find(':') + 2);
    return "unknown processor";
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Gathers the single repetitions; the tables are made at the end.
class Collector : public benchmark::BenchmarkReporter {
public:
    Collector(bool processorTime, bool fastest)
        : processorTime_(processorTime)
        , fastest_(fastest) {}
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Iteration && !run.error_occurred)
                seconds_[run.run_name.function_name].push_back(
                    (processorTime_ ? run.GetAdjustedCPUTime() : run.GetAdjustedRealTime()) * 1e-9);
    }
    /// Units per second; 0 for what did not run.
    double rate(const std::string& name, double units) const {
        const auto found = seconds_.find(name);
        if (found == seconds_.end())
            return 0;
        return units /
               (fastest_ ? *std::min_element(found->second.begin(), found->second.end()) : median(found->second));
    }

private:
    bool processorTime_;
    bool fastest_;
    std::map<std::string, std::vector<double>> seconds_;
};

std::string keyOf(const Contest& contest, const Contender& contender) {
    return contest.name + "/" + contender.name;
}

} // namespace

int runContests(int argc, char** argv, const std::vector<Contest>& contests, const Unit& unit) {
    // Short runs in random order, so that what else the machine does hits all alike.
    std::vector<std::string> arguments = {argv[0], "--benchmark_enable_random_interleaving=true",
                                          "--benchmark_repetitions=15", "--benchmark_min_time=0.01"};
    std::string tableFile;
    bool fastest = false;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument.compare(0, 8, "--table=") == 0)
            tableFile = argument.substr(8);
        else if (argument == "--fastest")
            fastest = true;
        else
            arguments.push_back(argument);
    }
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    int count = static_cast<int>(pointers.size());
    benchmark::Initialize(&count, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(count, pointers.data()))
        return 1;
    for (const Contest& contest : contests)
        for (const Contender& contender : contest.contenders) {
            const auto loop = [&contender](benchmark::State& state) {
                for (auto _ : state)
                    contender.run();
            };
            auto* registered = benchmark::RegisterBenchmark(keyOf(contest, contender).c_str(), loop);
            registered->Unit(benchmark::kNanosecond);
            if (!unit.processorTime)
                registered->UseRealTime(); // else the other threads' work would not count towards a repetition
        }
    Collector collector(unit.processorTime, fastest);
    benchmark::RunSpecifiedBenchmarks(&collector);

    std::ofstream table;
    if (!tableFile.empty())
        table.open(tableFile);
    std::cout << "Machine: " << processorName() << "; " << (fastest ? "fastest" : "medians") << ", " << unit.name
              << ", in parentheses the ratio to the best peer\n";
    for (const Contest& contest : contests) {
        double best = 0;
        for (const Contender& contender : contest.contenders)
            if (contender.side == Side::peer)
                best = std::max(best, collector.rate(keyOf(contest, contender), contest.units));
        std::string line;
        for (const Contender& contender : contest.contenders) {
            const double rate = collector.rate(keyOf(contest, contender), contest.units);
            if (rate == 0)
                continue;
            char text[200];
            std::snprintf(text, sizeof(text), " | %s %.4g", contender.name.c_str(), rate / unit.scale);
            line += text;
            if (best > 0 && !(contender.side == Side::peer && rate < best)) {
                std::snprintf(text, sizeof(text), " (%.2f)", rate / best);
                line += text;
            }
            table << contest.name << '\t' << contender.name << '\t'
                  << (contender.side == Side::ours   ? "ours"
                      : contender.side == Side::peer ? "peer"
                                                     : "bound")
                  << '\t' << rate << '\n';
        }
        if (!line.empty())
            std::cout << contest.name << line << '\n';
    }
    return 0;
}

} // namespace bench
