// Prints "name / baseline" ratios of per-iteration real time after all
// benchmarks of a program ran, so each comparison is made in one process on
// one machine state.
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
    void ReportRuns(const std::vector<Run> &runs) override {
        for (const Run &run : runs)
            if (run.run_type == Run::RT_Iteration)
                seconds_[run.benchmark_name()] = run.GetAdjustedRealTime();
        ConsoleReporter::ReportRuns(runs);
    }
    // Prints the ratio of `name` to `baseline`; `goal` is informational.
    void print_ratio(const std::string &name, const std::string &baseline,
                     const char *goal) const {
        auto a = seconds_.find(name), b = seconds_.find(baseline);
        if (a == seconds_.end() || b == seconds_.end() || b->second <= 0)
            return;
        std::printf("ratio %s / %s: %.2f (%s)\n", name.c_str(), baseline.c_str(),
                    a->second / b->second, goal);
    }

  private:
    std::map<std::string, double> seconds_;
};

// Runs the registered benchmarks and prints each (name, baseline) ratio.
inline int run_with_ratios(int argc, char **argv,
                           const std::vector<std::pair<std::string, std::string>> &ratios,
                           const char *goal) {
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    for (const auto &r : ratios)
        reporter.print_ratio(r.first, r.second, goal);
    benchmark::Shutdown();
    return 0;
}

} // namespace vexo_bench
