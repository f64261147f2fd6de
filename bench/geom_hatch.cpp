// SPDX-License-Identifier: MIT
// Hatch fill against Clipper's open-path clipping of the same scan lines,
// and merging plus travel order of 10^5 and 10^6 segments (the larger may
// take at most 15 times the smaller: n log n, not n^2).
#include <polyclipping/clipper.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "bench_ratio.hpp"
#include "vexo.h"

namespace {

constexpr int kEdges = 10000;
constexpr int kLines = 10000;
constexpr double kClipperScale = 1e6;

// A rippled outline of kEdges edges, radius 40 to 60.
std::vector<GeomPoint> outline() {
    std::vector<GeomPoint> pts(kEdges);
    std::memset(pts.data(), 0, pts.size() * sizeof(GeomPoint));
    for (int i = 0; i < kEdges; ++i) {
        const double t = 2 * M_PI * i / kEdges, r = 50 + 10 * std::sin(37 * t);
        pts[i].x = r * std::cos(t);
        pts[i].y = r * std::sin(t);
    }
    pts.back().flags = VEXO_POINT_END;
    return pts;
}

// kLines scan lines across the outline's height.
double spacing() {
    return 121.0 / kLines;
}

void hatch_vexo(benchmark::State &state) {
    const std::vector<GeomPoint> ring = outline();
    VexoHatch h;
    std::memset(&h, 0, sizeof h);
    h.spacing = spacing();
    h.passes = 1;
    for (auto _ : state) {
        uint32_t n = 0, status = 0;
        GeomPoint *out = vexo_geom_cover(ring.data(), kEdges, &h, &n, &status);
        benchmark::DoNotOptimize(out);
        vexo_geom_release(out);
    }
}

// The baseline: the same scan lines as open paths clipped by the outline
// with even-odd filling (integer paths prepared outside the loop).
void hatch_clipper(benchmark::State &state) {
    const std::vector<GeomPoint> ring = outline();
    ClipperLib::Path region;
    for (const GeomPoint &p : ring)
        region.emplace_back(ClipperLib::cInt(std::llround(p.x * kClipperScale)),
                            ClipperLib::cInt(std::llround(p.y * kClipperScale)));
    ClipperLib::Paths lines;
    for (int k = -kLines / 2 - 10; k <= kLines / 2 + 10; ++k) {
        const ClipperLib::cInt y = std::llround(k * spacing() * kClipperScale);
        const ClipperLib::cInt x = ClipperLib::cInt(70 * kClipperScale);
        lines.push_back({{-x, y}, {x, y}});
    }
    for (auto _ : state) {
        ClipperLib::Clipper c;
        c.AddPaths(lines, ClipperLib::ptSubject, false);
        c.AddPath(region, ClipperLib::ptClip, true);
        ClipperLib::PolyTree tree;
        c.Execute(ClipperLib::ctIntersection, tree, ClipperLib::pftEvenOdd, ClipperLib::pftEvenOdd);
        ClipperLib::Paths open;
        ClipperLib::OpenPathsFromPolyTree(tree, open);
        benchmark::DoNotOptimize(open.data());
    }
}

// n segments from n / 8 random walks, shuffled and half of them reversed,
// spread over an area that grows with n (same density at every size).
std::vector<GeomPoint> scattered_segments(size_t n) {
    std::mt19937 rng(1);
    const double side = std::sqrt(double(n)) * 2.0;
    std::uniform_real_distribution<double> c(0, side), step(-1, 1);
    std::vector<std::pair<GeomPoint, GeomPoint>> segs;
    segs.reserve(n);
    while (segs.size() < n) {
        GeomPoint a;
        std::memset(&a, 0, sizeof a);
        a.x = c(rng);
        a.y = c(rng);
        for (int k = 0; k < 8 && segs.size() < n; ++k) {
            GeomPoint b = a;
            b.x += step(rng);
            b.y += step(rng);
            segs.emplace_back(a, b);
            a = b;
        }
    }
    std::shuffle(segs.begin(), segs.end(), rng);
    std::vector<GeomPoint> pts;
    pts.reserve(2 * n);
    for (auto &s : segs) {
        if (rng() % 2) std::swap(s.first, s.second);
        pts.push_back(s.first);
        pts.push_back(s.second);
        pts.back().flags = VEXO_POINT_END;
    }
    return pts;
}

void merge_and_order(benchmark::State &state) {
    const std::vector<GeomPoint> pts = scattered_segments(size_t(state.range(0)));
    for (auto _ : state) {
        uint32_t n = 0, status = 0;
        GeomPoint *out = vexo_geom_merge_lines(pts.data(), uint32_t(pts.size()), 1e-9,
                                               VEXO_MERGE_ORDER, nullptr, &n, &status);
        benchmark::DoNotOptimize(out);
        vexo_geom_release(out);
    }
}

} // namespace

int main(int argc, char **argv) {
    benchmark::RegisterBenchmark("hatch/vexo", hatch_vexo)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("hatch/clipper", hatch_clipper)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("merge_order", merge_and_order)
        ->Arg(100000)
        ->Arg(1000000)
        ->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    vexo_bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print_ratio("hatch/vexo", "hatch/clipper", "goal <= 0.5");
    reporter.print_ratio("merge_order/1000000", "merge_order/100000", "goal <= 15");
    benchmark::Shutdown();
    return 0;
}
