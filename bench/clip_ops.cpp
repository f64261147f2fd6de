// SPDX-License-Identifier: MIT
// Union and outline of two 100,000-vertex polygons through vexo_clip_*,
// against the same Clipper operations on ready-made integer paths.  The
// ratio is vexo's cost (conversion both ways, heights, result array) over
// Clipper's own; it is printed after the table.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include <polyclipping/clipper.hpp>

#include "bench_ratio.hpp"
#include "vexo.h"

namespace {

constexpr int kVertices = 100000;
constexpr double kOutline = 0.5;

// A ring of radius about 50 mm with a slight ripple, so that it is not
// convex; the two used overlap without leaving holes between them.
std::vector<GeomPoint> wavy(double cx, double cy, double z) {
    std::vector<GeomPoint> a(kVertices + 1);
    for (int i = 0; i <= kVertices; ++i) {
        const double t = 6.283185307179586 * (i % kVertices) / kVertices;
        const double r = 50.0 + 0.5 * std::sin(40.0 * t);
        a[i] = GeomPoint{cx + r * std::cos(t), cy + r * std::sin(t), z, 0, {0}};
    }
    a[kVertices].flags = VEXO_POINT_END;
    return a;
}

ClipperLib::Path to_path(const std::vector<GeomPoint> &a) {
    ClipperLib::Path p;
    for (size_t i = 0; i + 1 < a.size(); ++i)
        p.emplace_back(static_cast<ClipperLib::cInt>(a[i].x * 1000.0),
                       static_cast<ClipperLib::cInt>(a[i].y * 1000.0));
    return p;
}

struct Inputs {
    std::vector<GeomPoint> first = wavy(0, 0, 1.0), second = wavy(30, 10, 2.0);
    std::vector<GeomPoint> both = [this] {
        auto b = first;
        b.insert(b.end(), second.begin(), second.end());
        return b;
    }();
    ClipperLib::Paths first_paths{to_path(first)}, second_paths{to_path(second)};
    ClipperLib::Paths both_paths{to_path(first), to_path(second)};
};

const Inputs &inputs() {
    static const Inputs in;
    return in;
}

void union_clipper(benchmark::State &state) {
    const Inputs &in = inputs();
    for (auto _ : state) {
        ClipperLib::Clipper c;
        c.AddPaths(in.first_paths, ClipperLib::ptSubject, true);
        c.AddPaths(in.second_paths, ClipperLib::ptClip, true);
        ClipperLib::Paths solution;
        c.Execute(ClipperLib::ctUnion, solution, ClipperLib::pftEvenOdd, ClipperLib::pftEvenOdd);
        benchmark::DoNotOptimize(solution.data());
    }
}

void union_vexo(benchmark::State &state, uint32_t mode) {
    const Inputs &in = inputs();
    for (auto _ : state) {
        ClipHandle *h = vexo_clip_create(in.first.data(), kVertices + 1, mode);
        vexo_clip_bool(h, in.second.data(), kVertices + 1, VEXO_CLIP_UNION | mode);
        uint32_t n = 0;
        GeomPoint *out = vexo_clip_get_result(h, &n);
        benchmark::DoNotOptimize(out);
        vexo_geom_release(out);
        vexo_clip_release(h);
    }
}

void outline_clipper(benchmark::State &state) {
    const Inputs &in = inputs();
    for (auto _ : state) {
        ClipperLib::ClipperOffset o(2.0, 0.25);
        o.AddPaths(in.both_paths, ClipperLib::jtRound, ClipperLib::etClosedPolygon);
        ClipperLib::Paths solution;
        o.Execute(solution, kOutline * 1000.0);
        benchmark::DoNotOptimize(solution.data());
    }
}

void outline_vexo(benchmark::State &state, uint32_t mode) {
    const Inputs &in = inputs();
    for (auto _ : state) {
        ClipHandle *h = vexo_clip_create(in.both.data(), 2 * (kVertices + 1), mode);
        vexo_clip_outline(h, VEXO_CLIP_JOIN_ROUND, kOutline);
        uint32_t n = 0;
        GeomPoint *out = vexo_clip_get_result(h, &n);
        benchmark::DoNotOptimize(out);
        vexo_geom_release(out);
        vexo_clip_release(h);
    }
}

} // namespace

int main(int argc, char **argv) {
    benchmark::RegisterBenchmark("union/clipper", union_clipper)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("union/vexo_3d", union_vexo, 0u)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("union/vexo_2d", union_vexo, VEXO_CLIP_2D)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("outline/clipper", outline_clipper)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("outline/vexo_3d", outline_vexo, 0u)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("outline/vexo_2d", outline_vexo, VEXO_CLIP_2D)
        ->Unit(benchmark::kMillisecond);
    return vexo_bench::run_with_ratios(argc, argv,
                                       {{"union/vexo_3d", "union/clipper"},
                                        {"union/vexo_2d", "union/clipper"},
                                        {"outline/vexo_3d", "outline/clipper"},
                                        {"outline/vexo_2d", "outline/clipper"}},
                                       "goal <= 1.2");
}
