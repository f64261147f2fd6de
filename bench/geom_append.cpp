// SPDX-License-Identifier: MIT
// Appending one million dots one at a time: vexo_geom_append_dot_fast versus
// std::vector<GeomPoint>::push_back, the floor any host would compare with.
// The ratio is printed after both runs.  The "reused" pair appends into
// storage kept from the previous iteration (a cleared vector, a count set
// back to 0), so it compares the cost per call alone, without growth.
#include <benchmark/benchmark.h>

#include <vector>

#include "bench_ratio.hpp"
#include "vexo.h"

namespace {

constexpr uint32_t kDots = 1000000;

GeomPoint *append_dots(GeomPoint *points, uint32_t *count, uint32_t *capacity) {
    for (uint32_t i = 0; i < kDots; ++i) {
        const GeomPoint at{double(i), 1.0, 0.0, 0, 0};
        points = vexo_geom_append_dot_fast(points, count, &at, false, nullptr, capacity);
    }
    return points;
}

void BM_VectorPushBack(benchmark::State &state) {
    for (auto _ : state) {
        std::vector<GeomPoint> points;
        for (uint32_t i = 0; i < kDots; ++i)
            points.push_back(GeomPoint{double(i), 1.0, 0.0, VEXO_POINT_END, 0});
        benchmark::DoNotOptimize(points.data());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kDots);
}

void BM_AppendDotFast(benchmark::State &state) {
    for (auto _ : state) {
        uint32_t count = 0, capacity = 0;
        GeomPoint *points = append_dots(nullptr, &count, &capacity);
        benchmark::DoNotOptimize(points);
        vexo_geom_release(points);
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kDots);
}

void BM_VectorPushBackReused(benchmark::State &state) {
    std::vector<GeomPoint> points;
    for (auto _ : state) {
        points.clear();
        for (uint32_t i = 0; i < kDots; ++i)
            points.push_back(GeomPoint{double(i), 1.0, 0.0, VEXO_POINT_END, 0});
        benchmark::DoNotOptimize(points.data());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kDots);
}

void BM_AppendDotFastReused(benchmark::State &state) {
    GeomPoint *points = nullptr;
    uint32_t count = 0, capacity = 0;
    for (auto _ : state) {
        count = 0;
        points = append_dots(points, &count, &capacity);
        benchmark::DoNotOptimize(points);
    }
    vexo_geom_release(points);
    state.SetItemsProcessed(int64_t(state.iterations()) * kDots);
}

BENCHMARK(BM_VectorPushBack)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_VectorPushBackReused)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AppendDotFastReused)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AppendDotFast)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv) {
    return vexo_bench::run_with_ratios(argc, argv,
                                       {{"BM_AppendDotFast", "BM_VectorPushBack"},
                                        {"BM_AppendDotFastReused", "BM_VectorPushBackReused"}},
                                       "goal <= 1.5");
}
