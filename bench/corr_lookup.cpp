// SPDX-License-Identifier: MIT
// Head-geometry tables and table lookups.  Baselines measured in the same
// run: set_base against set_focal (another whole-table pass with a square
// root per node), the forward lookup of 100,000 points against a plain
// linear map of the same array, and the inverse against the forward one.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "bench_ratio.hpp"
#include "vexo.h"

namespace {

constexpr uint32_t kPoints = 100000;

CorrBase flat_head() {
    CorrBase h;
    std::memset(&h, 0, sizeof h);
    h.mirror_gap = 15;
    h.distance = 180;
    h.field_size = 120;
    h.options = VEXO_CORR_BASE_FOCUS;
    return h;
}

std::vector<GeomPoint> field_points() {
    std::mt19937_64 rng(3);
    std::uniform_real_distribution<double> pos(-60, 60);
    std::vector<GeomPoint> points(kPoints);
    for (GeomPoint &p : points) {
        std::memset(&p, 0, sizeof p);
        p.x = pos(rng);
        p.y = pos(rng);
    }
    return points;
}

void BM_SetFocal(benchmark::State &state) {
    CorrTable table;
    vexo_corr_set_neutral(&table);
    for (auto _ : state) {
        vexo_corr_set_focal(&table, 163, 120, 120);
        benchmark::DoNotOptimize(table.cell[0].z);
    }
}

void BM_SetBase(benchmark::State &state) {
    CorrTable table;
    vexo_corr_set_neutral(&table);
    const CorrBase head = flat_head();
    for (auto _ : state) {
        if (vexo_corr_set_base(&table, &head, nullptr) != VEXO_OK) state.SkipWithError("refused");
        benchmark::DoNotOptimize(table.cell[0].x);
    }
}

void BM_LinearMap(benchmark::State &state) {
    const std::vector<GeomPoint> source = field_points();
    std::vector<GeomPoint> points = source;
    for (auto _ : state) {
        points = source;
        for (GeomPoint &p : points) {
            p.x = p.x / 120 * 65535;
            p.y = p.y / 120 * 65535;
        }
        benchmark::DoNotOptimize(points.data());
    }
}

void run_apply(benchmark::State &state, uint32_t options) {
    CorrTable table;
    const CorrBase head = flat_head();
    vexo_corr_set_base(&table, &head, nullptr);
    std::vector<GeomPoint> source = field_points();
    // The inverse starts from output values: the forward lookup's results.
    if (options & VEXO_CORR_APPLY_INVERSE) vexo_corr_apply(&table, source.data(), kPoints, 120, 0);
    std::vector<GeomPoint> points = source;
    for (auto _ : state) {
        points = source;
        if (vexo_corr_apply(&table, points.data(), kPoints, 120, options) != VEXO_OK)
            state.SkipWithError("refused");
        benchmark::DoNotOptimize(points.data());
    }
}

void BM_ApplyForward(benchmark::State &state) {
    run_apply(state, 0);
}
void BM_ApplyInverse(benchmark::State &state) {
    run_apply(state, VEXO_CORR_APPLY_INVERSE);
}

} // namespace

BENCHMARK(BM_SetFocal);
BENCHMARK(BM_SetBase);
BENCHMARK(BM_LinearMap);
BENCHMARK(BM_ApplyForward);
BENCHMARK(BM_ApplyInverse);

int main(int argc, char **argv) {
    return vexo_bench::run_with_ratios(argc, argv,
                                       {{"BM_SetBase", "BM_SetFocal"},
                                        {"BM_ApplyForward", "BM_LinearMap"},
                                        {"BM_ApplyInverse", "BM_ApplyForward"}},
                                       "informational");
}
