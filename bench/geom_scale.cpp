// SPDX-License-Identifier: MIT
// Scaling one million points in place: vexo_geom_scale (which maps every
// point through a full scaling matrix) versus a plain loop multiplying x, y
// and z by the factors.  The ratio is printed after both runs.
#include <benchmark/benchmark.h>

#include <vector>

#include "bench_ratio.hpp"
#include "vexo.h"

namespace {

constexpr uint32_t kPoints = 1000000;

// Powers of two, alternated so the coordinates never drift towards
// overflow or subnormals however many iterations run.
constexpr double kFactors[2][3] = {{2.0, 0.5, 4.0}, {0.5, 2.0, 0.25}};

std::vector<GeomPoint> make_points() {
    std::vector<GeomPoint> points(kPoints);
    for (uint32_t i = 0; i < kPoints; ++i)
        points[i] = GeomPoint{i * 0.001, 1.0 - i * 0.002, 0.5, (i % 100 == 99) ? 1u : 0u, 0};
    return points;
}

void BM_PlainLoop(benchmark::State &state) {
    std::vector<GeomPoint> points = make_points();
    int parity = 0;
    for (auto _ : state) {
        const double *f = kFactors[parity];
        for (GeomPoint &p : points) {
            p.x *= f[0];
            p.y *= f[1];
            p.z *= f[2];
        }
        benchmark::DoNotOptimize(points.data());
        benchmark::ClobberMemory();
        parity ^= 1;
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kPoints);
}

void BM_GeomScale(benchmark::State &state) {
    std::vector<GeomPoint> points = make_points();
    int parity = 0;
    for (auto _ : state) {
        const double *f = kFactors[parity];
        vexo_geom_scale(points.data(), kPoints, f[0], f[1], f[2]);
        benchmark::DoNotOptimize(points.data());
        benchmark::ClobberMemory();
        parity ^= 1;
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kPoints);
}

BENCHMARK(BM_PlainLoop)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GeomScale)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv) {
    return vexo_bench::run_with_ratios(argc, argv, {{"BM_GeomScale", "BM_PlainLoop"}},
                                       "goal <= 1.2");
}
