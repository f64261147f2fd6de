// SPDX-License-Identifier: MIT
// Point reduction over one million points in many polylines.  The reducers
// work in place and destroy their input, so every iteration first copies a
// pristine array; the baseline is that copy alone (the memcpy floor of one
// pass over the data), and each reducer is reported as copy+reduce / copy,
// the reducer also alone.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "bench_ratio.hpp"
#include "geom/wide_reduce.hpp"
#include "vexo.h"

namespace {

constexpr uint32_t kPoints = 1000000;
constexpr uint32_t kLinePoints = 40;

// Random-walk polylines with steps up to 1 unit, so a minimum distance of
// 0.3 drops a share of points, joins some lines and removes a few short ones.
const std::vector<GeomPoint> &pristine() {
    static const std::vector<GeomPoint> points = [] {
        std::vector<GeomPoint> pts(kPoints);
        std::mt19937 rng(2024);
        std::uniform_real_distribution<double> step(-0.7, 0.7);
        double x = 0.0, y = 0.0, z = 0.0;
        for (uint32_t i = 0; i < kPoints; ++i) {
            x += step(rng);
            y += step(rng);
            z += step(rng) * 0.01;
            const bool end = (i % kLinePoints) == kLinePoints - 1 || rng() % 97 == 0;
            pts[i] = GeomPoint{x, y, z, end ? VEXO_POINT_END : 0u, 0};
        }
        return pts;
    }();
    return points;
}

void copy_into(std::vector<GeomPoint> &work) {
    std::memcpy(work.data(), pristine().data(), kPoints * sizeof(GeomPoint));
    benchmark::ClobberMemory();
}

void BM_CopyPass(benchmark::State &state) {
    std::vector<GeomPoint> work(kPoints);
    for (auto _ : state) {
        copy_into(work);
        benchmark::DoNotOptimize(work.data());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kPoints);
}

using Reducer = GeomPoint *(*)(GeomPoint *, uint32_t *, double);

void BM_CopyAndReduce(benchmark::State &state, Reducer reduce, double limit) {
    std::vector<GeomPoint> work(kPoints);
    uint32_t kept = 0;
    for (auto _ : state) {
        copy_into(work);
        uint32_t count = kPoints;
        benchmark::DoNotOptimize(reduce(work.data(), &count, limit));
        kept = count;
    }
    state.counters["kept"] = kept;
    state.SetItemsProcessed(int64_t(state.iterations()) * kPoints);
}

// The reducer alone: the copy that restores the input is left out of the
// timing, so the ratio is the reducer's time over one copy pass.
void BM_ReduceAlone(benchmark::State &state) {
    std::vector<GeomPoint> work(kPoints);
    for (auto _ : state) {
        state.PauseTiming();
        copy_into(work);
        state.ResumeTiming();
        uint32_t count = kPoints;
        benchmark::DoNotOptimize(vexo_geom_reduce(work.data(), &count, 0.3));
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kPoints);
}

// The same with the 256-bit paths switched off: the figure for processors
// without AVX2.
void BM_CopyAndReduceNarrow(benchmark::State &state) {
    vexo::allow_wide_reduce(false);
    BM_CopyAndReduce(state, vexo_geom_reduce, 0.3);
    vexo::allow_wide_reduce(true);
}

BENCHMARK(BM_CopyPass)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CopyAndReduceNarrow)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReduceAlone)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_CopyAndReduce, reduce, vexo_geom_reduce, 0.3)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_CopyAndReduce, reduce_2d, vexo_geom_reduce_2d, 0.3)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_CopyAndReduce, by_angle, vexo_geom_reduce_by_angle, 5.0)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_CopyAndReduce, by_angle_2d, vexo_geom_reduce_by_angle_2d, 0.0873)
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv) {
    return vexo_bench::run_with_ratios(argc, argv,
                                       {{"BM_CopyAndReduce/reduce", "BM_CopyPass"},
                                        {"BM_CopyAndReduceNarrow", "BM_CopyPass"},
                                        {"BM_ReduceAlone", "BM_CopyPass"},
                                        {"BM_CopyAndReduce/reduce_2d", "BM_CopyPass"},
                                        {"BM_CopyAndReduce/by_angle", "BM_CopyPass"},
                                        {"BM_CopyAndReduce/by_angle_2d", "BM_CopyPass"}},
                                       "goal <= 3 for reduce");
}
