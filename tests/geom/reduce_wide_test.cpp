// SPDX-License-Identifier: MIT
// The distance reduction's fast lanes against the plain formulas: the quiet
// bits and the moving of kept records give the same result on the 256-bit
// and the narrow path, down to the last bit, for values that stress the
// squares (NaN, infinities, subnormals, signed zeros, huge steps) and every
// flag pattern.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "geom/kept_records.hpp"
#include "geom/quiet_bits.hpp"
#include "geom/wide_reduce.hpp"
#include "vexo_test_util.hpp"

namespace {

// Runs a test body once on each path, naming the path in failures.
class OnBothPaths : public ::testing::TestWithParam<bool> {
protected:
    void SetUp() override { vexo::allow_wide_reduce(GetParam()); }
    void TearDown() override { vexo::allow_wide_reduce(true); }
};

std::string path_name(const ::testing::TestParamInfo<bool> &info) {
    return info.param ? "wide" : "narrow";
}

double awkward_value(std::mt19937 &rng) {
    static const double specials[] = {0.0,
                                      -0.0,
                                      std::numeric_limits<double>::quiet_NaN(),
                                      std::numeric_limits<double>::infinity(),
                                      -std::numeric_limits<double>::infinity(),
                                      std::numeric_limits<double>::denorm_min(),
                                      1e-310,
                                      1e200,
                                      -1e200,
                                      std::numeric_limits<double>::max()};
    if (rng() % 8 == 0) return specials[rng() % std::size(specials)];
    return std::uniform_real_distribution<double>(-2.0, 2.0)(rng);
}

// Points with every flag pattern in the low bits, random reserved words
// (never read), and coordinates that are mostly small steps, sometimes awkward.
std::vector<GeomPoint> awkward_points(uint32_t n, uint32_t seed) {
    std::mt19937 rng(seed);
    std::vector<GeomPoint> pts(n);
    for (auto &p : pts) {
        p = vexo_test::point(awkward_value(rng), awkward_value(rng), awkward_value(rng),
                             static_cast<uint32_t>(rng() % 8));
        p.reserved = static_cast<uint32_t>(rng());
    }
    return pts;
}

template <bool WithZ>
uint64_t literal_quiet_bits(const GeomPoint *p, uint32_t base, uint32_t first, uint32_t end,
                            double surely_above) {
    uint64_t bits = 0;
    for (uint32_t j = first; j < end; ++j) {
        const double dx = p[j - 1].x - p[j].x, dy = p[j - 1].y - p[j].y;
        double squared = dx * dx + dy * dy;
        if (WithZ) {
            const double dz = p[j - 1].z - p[j].z;
            squared = squared + dz * dz;
        }
        const bool processed = (p[j].flags & VEXO_POINT_PROCESSED) != 0;
        const bool end_flag = (p[j].flags & VEXO_POINT_END) != 0;
        if (!processed && (end_flag || squared > surely_above)) bits |= uint64_t{1} << (j - base);
    }
    return bits;
}

TEST_P(OnBothPaths, QuietBitsMatchTheLiteralTestOnAwkwardValues) {
    const std::vector<GeomPoint> pts = awkward_points(4000, 7);
    const double bounds[] = {0.25, 1e-300, std::numeric_limits<double>::infinity(), 0.0};
    for (double above : bounds) {
        for (uint32_t base = 0; base + 64 <= pts.size(); base += 64) {
            // Every start and end inside the block, as the walk asks for them.
            const uint32_t first = base == 0 ? 1 : base + (base / 64) % 7;
            const uint32_t end = base + 64 - (base / 64) % 5;
            EXPECT_EQ(vexo::quiet_bits<true>(pts.data(), base, first, end, above),
                      literal_quiet_bits<true>(pts.data(), base, first, end, above))
                << "3D, block " << base << ", bound " << above;
            EXPECT_EQ(vexo::quiet_bits<false>(pts.data(), base, first, end, above),
                      literal_quiet_bits<false>(pts.data(), base, first, end, above))
                << "2D, block " << base << ", bound " << above;
        }
    }
}

// The hook used below: drops the pair ending at k when the point at k has
// an odd reserved word, and counts its calls.
struct PairHook {
    const GeomPoint *points;
    uint32_t calls = 0;
    static bool drops(const void *self, uint32_t k) {
        auto *hook = const_cast<PairHook *>(static_cast<const PairHook *>(self));
        ++hook->calls;
        return k >= 1 && (hook->points[k].reserved & 1u) != 0;
    }
};

TEST_P(OnBothPaths, MovingKeptRecordsMatchesThePlainFilter) {
    for (uint32_t round = 0; round < 20; ++round) {
        const uint32_t n = 1 + round * 37;
        std::vector<GeomPoint> pts = awkward_points(n, 100 + round);
        // The plain filter on a copy: keep unprocessed records whole; at a
        // kept line end ask the hook, which may take back the last two.
        std::vector<GeomPoint> expected;
        uint32_t expected_calls = 0;
        for (const GeomPoint &p : pts) {
            if (p.flags & VEXO_POINT_PROCESSED) continue;
            expected.push_back(p);
            if ((p.flags & VEXO_POINT_END) && expected.size() >= 2) {
                ++expected_calls;
                if (p.reserved & 1u) expected.resize(expected.size() - 2);
            } else if (p.flags & VEXO_POINT_END) {
                ++expected_calls; // the hook says no at k = 0
            }
        }
        PairHook hook{pts.data()};
        const uint32_t from = 0, to = n;
        const uint32_t kept = vexo::move_kept(pts.data(), from, to, 0, {&PairHook::drops, &hook});
        ASSERT_EQ(kept, expected.size()) << "round " << round;
        EXPECT_EQ(hook.calls, expected_calls) << "round " << round;
        EXPECT_EQ(std::memcmp(pts.data(), expected.data(), kept * sizeof(GeomPoint)), 0)
            << "round " << round;
    }
}

INSTANTIATE_TEST_SUITE_P(ReduceWide, OnBothPaths, ::testing::Bool(), path_name);

} // namespace
