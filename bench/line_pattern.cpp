// SPDX-License-Identifier: MIT
// Dots along a polyline: vexo_line_to_pattern on a 10,000-segment zigzag at
// 100 dots per segment (1,000,001 dots) against writing the same number of
// dots one by one with vexo_geom_append_dot_fast, the host's alternative.
// The ratio is printed after both runs.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "bench_ratio.hpp"
#include "vexo.h"

namespace {

constexpr uint32_t kSegments = 10000;
constexpr uint32_t kDotsPerSegment = 100;
constexpr double kPitch = 0.01;

// A zigzag whose every segment is exactly 100 pitches long (3-4-5 legs).
std::vector<GeomPoint> zigzag() {
    std::vector<GeomPoint> points;
    for (uint32_t i = 0; i <= kSegments; ++i)
        points.push_back(GeomPoint{0.6 * i, (i % 2) * 0.8, 0.0, 0, 0});
    points.back().flags = VEXO_POINT_END;
    return points;
}

void BM_AppendDotFast(benchmark::State &state) {
    const uint32_t dots = kSegments * kDotsPerSegment + 1;
    for (auto _ : state) {
        GeomPoint *points = nullptr;
        uint32_t count = 0, capacity = 0;
        for (uint32_t i = 0; i < dots; ++i) {
            const GeomPoint at{double(i) * kPitch, 1.0, 0.0, 0, 0};
            points = vexo_geom_append_dot_fast(points, &count, &at, false, nullptr, &capacity);
        }
        benchmark::DoNotOptimize(points);
        vexo_geom_release(points);
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * dots);
}

void BM_LinePattern(benchmark::State &state) {
    const std::vector<GeomPoint> line = zigzag();
    uint32_t produced = 0;
    for (auto _ : state) {
        uint32_t status = 0;
        GeomPoint *points = vexo_line_to_pattern(line.data(), uint32_t(line.size()), kPitch, 0.0, 0,
                                                 false, nullptr, &produced, &status);
        benchmark::DoNotOptimize(points);
        vexo_geom_release(points);
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * produced);
    state.counters["dots"] = produced;
}

BENCHMARK(BM_AppendDotFast)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LinePattern)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv) {
    return vexo_bench::run_with_ratios(argc, argv, {{"BM_LinePattern", "BM_AppendDotFast"}},
                                       "goal <= 2.0, i.e. at least half the speed");
}
