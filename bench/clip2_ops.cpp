// SPDX-License-Identifier: MIT
// vexo_clip2_* against vexo_clip_* on the same inputs, whole round trip
// (create, operation, get_result): a union of 2,000 overlapping 64-gons
// (curved input, goal <= 8), a union of 2,000 axis-parallel rectangles
// (goal <= 1.5), and a round-join outline of the 64-gons for reference.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "bench_ratio.hpp"
#include "vexo.h"

namespace {

constexpr int kShapes = 2000;

void close_path(std::vector<GeomPoint> *a, size_t start) {
    GeomPoint end = (*a)[start];
    end.flags = VEXO_POINT_END;
    a->push_back(end);
}

// Shapes scattered over 200 x 200 mm so that most overlap a few others; the
// first half is the subject, the second half the operand.  Each array ends
// with a spare point, since the families never read an array's last point.
struct Inputs {
    std::vector<GeomPoint> gons[2], rects[2];
    Inputs() {
        std::mt19937 rng(5);
        std::uniform_real_distribution<double> at(0.0, 200.0), size(2.0, 6.0);
        for (int k = 0; k < kShapes; ++k) {
            const double cx = at(rng), cy = at(rng), r = size(rng), w = size(rng);
            std::vector<GeomPoint> &gon = gons[k % 2], &box = rects[k % 2];
            const size_t g = gon.size(), b = box.size();
            for (int i = 0; i < 64; ++i) {
                const double t = 6.283185307179586 * i / 64;
                gon.push_back(GeomPoint{cx + r * std::cos(t), cy + r * std::sin(t), 0, 0, {0}});
            }
            close_path(&gon, g);
            for (const auto &c : {std::pair{-w, -r}, {w, -r}, {w, r}, {-w, r}})
                box.push_back(GeomPoint{cx + c.first, cy + c.second, 0, 0, {0}});
            close_path(&box, b);
        }
        for (auto *a : {&gons[0], &gons[1], &rects[0], &rects[1]}) a->push_back(a->back());
    }
};

const Inputs &inputs() {
    static const Inputs in;
    return in;
}

template <class H, H *(*create)(const GeomPoint *, uint32_t, uint32_t),
          uint32_t (*op)(H *, const GeomPoint *, uint32_t, uint32_t),
          GeomPoint *(*get)(const H *, uint32_t *), void (*release)(H *)>
void run_union(benchmark::State &state, bool curved) {
    const auto &in = curved ? inputs().gons : inputs().rects;
    for (auto _ : state) {
        H *h = create(in[0].data(), uint32_t(in[0].size()), VEXO_CLIP_2D);
        op(h, in[1].data(), uint32_t(in[1].size()), VEXO_CLIP_UNION | VEXO_CLIP_2D);
        uint32_t n = 0;
        GeomPoint *out = get(h, &n);
        benchmark::DoNotOptimize(out);
        vexo_geom_release(out);
        release(h);
    }
}

template <class H, H *(*create)(const GeomPoint *, uint32_t, uint32_t),
          uint32_t (*outline)(H *, uint32_t, double), GeomPoint *(*get)(const H *, uint32_t *),
          void (*release)(H *)>
void run_outline(benchmark::State &state) {
    const auto &in = inputs().gons[0];
    for (auto _ : state) {
        H *h = create(in.data(), uint32_t(in.size()), VEXO_CLIP_2D);
        outline(h, VEXO_CLIP_JOIN_ROUND, 0.5);
        uint32_t n = 0;
        GeomPoint *out = get(h, &n);
        benchmark::DoNotOptimize(out);
        vexo_geom_release(out);
        release(h);
    }
}

const auto clip_union = run_union<ClipHandle, vexo_clip_create, vexo_clip_bool,
                                  vexo_clip_get_result, vexo_clip_release>;
const auto clip2_union = run_union<Clip2Handle, vexo_clip2_create, vexo_clip2_bool,
                                   vexo_clip2_get_result, vexo_clip2_release>;

} // namespace

int main(int argc, char **argv) {
    const auto ms = benchmark::kMillisecond;
    benchmark::RegisterBenchmark("gons/clip", clip_union, true)->Unit(ms);
    benchmark::RegisterBenchmark("gons/clip2", clip2_union, true)->Unit(ms);
    benchmark::RegisterBenchmark("rects/clip", clip_union, false)->Unit(ms);
    benchmark::RegisterBenchmark("rects/clip2", clip2_union, false)->Unit(ms);
    benchmark::RegisterBenchmark("outline/clip",
                                 run_outline<ClipHandle, vexo_clip_create, vexo_clip_outline,
                                             vexo_clip_get_result, vexo_clip_release>)
        ->Unit(ms);
    benchmark::RegisterBenchmark("outline/clip2",
                                 run_outline<Clip2Handle, vexo_clip2_create, vexo_clip2_outline,
                                             vexo_clip2_get_result, vexo_clip2_release>)
        ->Unit(ms);
    return vexo_bench::run_with_ratios(argc, argv,
                                       {{"gons/clip2", "gons/clip"},
                                        {"rects/clip2", "rects/clip"},
                                        {"outline/clip2", "outline/clip"}},
                                       "goal <= 8 (gons), <= 1.5 (rects)");
}
