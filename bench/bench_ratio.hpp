// SPDX-License-Identifier: MIT
// Prints "name / baseline" ratios of per-iteration time after all
// benchmarks of a program ran, so each comparison is made in one process on
// one machine state.  Both clocks are printed: real time is what a host
// waits, CPU time is the figure a busy machine disturbs least.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace vexo_bench {

class RatioReporter : public benchmark::ConsoleReporter {
public:
    // Keeps each run's times by name; with --benchmark_repetitions the
    // median replaces the single runs, which come first.
    void ReportRuns(const std::vector<Run> &runs) override {
        for (const Run &run : runs)
            if (run.run_type == Run::RT_Iteration || run.aggregate_name == "median")
                times_[run.run_name.str()] = {run.GetAdjustedRealTime(), run.GetAdjustedCPUTime()};
        ConsoleReporter::ReportRuns(runs);
    }
    // Prints the ratio of `name` to `baseline`; `goal` is informational.
    void print_ratio(const std::string &name, const std::string &baseline, const char *goal) const {
        auto a = times_.find(name), b = times_.find(baseline);
        if (a == times_.end() || b == times_.end() || b->second.real <= 0 || b->second.cpu <= 0)
            return;
        std::printf("ratio %s / %s: %.2f real, %.2f cpu (%s)\n", name.c_str(), baseline.c_str(),
                    a->second.real / b->second.real, a->second.cpu / b->second.cpu, goal);
    }

private:
    struct Times {
        double real, cpu;
    };
    std::map<std::string, Times> times_;
};

using RatioList = std::vector<std::pair<std::string, std::string>>;

// Runs the registered benchmarks and prints each (name, baseline) ratio.
inline int run_with_ratios(int argc, char **argv, const RatioList &ratios, const char *goal) {
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    for (const auto &r : ratios) reporter.print_ratio(r.first, r.second, goal);
    benchmark::Shutdown();
    return 0;
}

} // namespace vexo_bench
