// SPDX-License-Identifier: MIT
// Tables and mirror angles of the ideal two-mirror head, checked against a
// ray tracer written here: the beam is reflected off each turned mirror
// plane and carried to the field, so no formula of the library is reused.
#include <random>

#include "corr/head_geometry.hpp"
#include "fixtures.hpp"

using namespace vexo_test;

namespace {

struct Vec {
    double x, y, z;
};
Vec operator+(Vec a, Vec b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
Vec operator-(Vec a, Vec b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
Vec operator*(double s, Vec a) {
    return {s * a.x, s * a.y, s * a.z};
}
double dot(Vec a, Vec b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
double length(Vec a) {
    return std::sqrt(dot(a, a));
}

// Rodrigues' rotation of v about the unit axis k by angle a.
Vec rotate(Vec v, Vec k, double a) {
    const Vec kxv{k.y * v.z - k.z * v.y, k.z * v.x - k.x * v.z, k.x * v.y - k.y * v.x};
    return std::cos(a) * v + std::sin(a) * kxv + (dot(k, v) * (1 - std::cos(a))) * k;
}

// The point where the ray p + t b meets the plane through q with normal n.
Vec meet(Vec p, Vec b, Vec q, Vec n) {
    return p + (dot(q - p, n) / dot(b, n)) * b;
}

Vec reflect(Vec b, Vec n) {
    return b - (2 * dot(b, n)) * n;
}

struct Trace {
    double x, y; // spot on the field
    double path; // X mirror to spot (flat field only)
};

// Folded head, field plane z = 0 seen from +z.  The laser runs along +x at
// height d and meets the X mirror, whose axis is vertical through
// (0, -e, d); at rest (normal (-1, 1, 0)/sqrt 2) it sends the beam along +y
// to the Y mirror, axis along x through (0, 0, d), which at rest (normal
// (0, -1, -1)/sqrt 2) sends it down.  A positive angle turns the X mirror
// clockwise seen from above and the Y mirror about +x: the spot moves to +x
// and +y.  Angles are mirror turns in degrees.
Trace trace(const CorrBase &h, double mirror_x_deg, double mirror_y_deg) {
    const double ax = mirror_x_deg / 180 * kPiF;
    const double ay = mirror_y_deg / 180 * kPiF;
    const double s = 1 / std::sqrt(2.0);
    const Vec x_axis_point{0, -h.mirror_gap, h.distance}, y_axis_point{0, 0, h.distance};
    const Vec nx = rotate({-s, s, 0}, {0, 0, -1}, ax);
    const Vec ny = rotate({0, -s, -s}, {1, 0, 0}, ay);
    const Vec start{-50, -h.mirror_gap, h.distance};
    const Vec on_x = meet(start, {1, 0, 0}, x_axis_point, nx);
    const Vec b1 = reflect({1, 0, 0}, nx);
    const Vec on_y = meet(on_x, b1, y_axis_point, ny);
    const Vec b2 = reflect(b1, ny);
    if (h.focal_length != 0) {
        // Ideal f-theta: radius f * theta in the beam's azimuth.
        const double across = std::hypot(b2.x, b2.y);
        const double theta = std::atan2(across, -b2.z);
        if (across == 0) return {0, 0, 0};
        return {h.focal_length * theta * b2.x / across, h.focal_length * theta * b2.y / across, 0};
    }
    const Vec spot = meet(on_y, b2, {0, 0, 0}, {0, 0, 1});
    return {spot.x, spot.y, length(on_y - on_x) + length(spot - on_y)};
}

// A flat-field head with a short throw, an f-theta head, a wide-angle one.
const CorrBase kHeads[] = {head(15, 180, 120), head(13, 0, 110, 163), head(10, 60, 150),
                           head(22, 35, 70, 100)};

double ideal(int line, double field) {
    return (line - 32) / 64.0 * field;
}

CorrTable base_table(const CorrBase &h, double *full_scale = nullptr) {
    CorrTable t = neutral_table();
    double scale = 0;
    EXPECT_EQ(vexo_corr_set_base(&t, &h, &scale), VEXO_OK);
    if (full_scale) *full_scale = scale;
    return t;
}

class CorrBaseHeads : public ::testing::TestWithParam<CorrBase> {};

} // namespace

TEST_P(CorrBaseHeads, EveryNodeDrivesTheSpotOntoItsIdealPosition) {
    const CorrBase h = GetParam();
    double full_scale = 0;
    const CorrTable t = base_table(h, &full_scale);
    for (int r = 0; r < 65; ++r) {
        for (int c = 0; c < 65; ++c) {
            const GeomPoint &n = at(t, r, c);
            const Trace s = trace(h, n.x / 32767.5 * full_scale, n.y / 32767.5 * full_scale);
            ASSERT_NEAR(s.x, ideal(c, h.field_size), 1e-9 * h.field_size) << r << ", " << c;
            ASSERT_NEAR(s.y, ideal(r, h.field_size), 1e-9 * h.field_size) << r << ", " << c;
        }
    }
}

TEST_P(CorrBaseHeads, AnglesLandOnRandomPositions) {
    const CorrBase h = GetParam();
    std::mt19937_64 rng(22);
    std::uniform_real_distribution<double> pos(-h.field_size / 2, h.field_size / 2);
    for (int k = 0; k < 2000; ++k) {
        const double x = pos(rng), y = pos(rng);
        double ax = NAN, ay = NAN;
        ASSERT_EQ(vexo_corr_calc_base_angles(&h, x, y, &ax, &ay), VEXO_OK);
        const Trace s = trace(h, ax, ay);
        ASSERT_NEAR(s.x, x, 1e-12) << x << ", " << y;
        ASSERT_NEAR(s.y, y, 1e-12) << x << ", " << y;
    }
}

TEST_P(CorrBaseHeads, ForwardModelMatchesTheTracer) {
    // The C++ model other code renders through: mirror angles to the spot.
    const CorrBase h = GetParam();
    std::mt19937_64 rng(23);
    std::uniform_real_distribution<double> angle(-12, 12);
    for (int k = 0; k < 2000; ++k) {
        const double ax = angle(rng), ay = angle(rng);
        const vexo::FieldPosition p =
            vexo::position_for_angles(h, {vexo::beam_radians(ax), vexo::beam_radians(ay)});
        const Trace s = trace(h, ax, ay);
        ASSERT_NEAR(p.x, s.x, 1e-12 * h.field_size) << ax << ", " << ay;
        ASSERT_NEAR(p.y, s.y, 1e-12 * h.field_size) << ax << ", " << ay;
    }
}

TEST_P(CorrBaseHeads, XIsMirroredAcrossTheCentreColumn) {
    const CorrTable t = base_table(GetParam());
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c)
            ASSERT_EQ(at(t, r, c).x, -at(t, r, 64 - c).x) << r << ", " << c;
}

TEST_P(CorrBaseHeads, CentreNodeIsZero) {
    const CorrTable t = base_table(GetParam());
    EXPECT_EQ(at(t, 32, 32).x, 0.0);
    EXPECT_EQ(at(t, 32, 32).y, 0.0);
}

TEST_P(CorrBaseHeads, LargestOutputIsTheEndOfTheRange) {
    const CorrTable t = base_table(GetParam());
    double largest = 0;
    for (const GeomPoint &c : t.cell) largest = std::max({largest, std::fabs(c.x), std::fabs(c.y)});
    EXPECT_EQ(largest, 32767.5);
}

TEST_P(CorrBaseHeads, WithoutFocusOptionZAndFlagsStay) {
    CorrTable t;
    std::memset(&t, 0x3C, sizeof t);
    const CorrTable before = t;
    const CorrBase h = GetParam();
    ASSERT_EQ(vexo_corr_set_base(&t, &h, nullptr), VEXO_OK);
    for (int k = 0; k < 4225; ++k) {
        ASSERT_TRUE(same_bytes(t.cell[k].z, before.cell[k].z)) << k;
        ASSERT_EQ(t.cell[k].flags, before.cell[k].flags) << k;
        ASSERT_EQ(t.cell[k].reserved, before.cell[k].reserved) << k;
    }
}

TEST_P(CorrBaseHeads, FocusOptionWritesTheExtraBeamPath) {
    CorrBase h = GetParam();
    h.options = VEXO_CORR_BASE_FOCUS;
    double full_scale = 0;
    const CorrTable t = base_table(h, &full_scale);
    const double axial = h.mirror_gap + h.distance;
    for (const GeomPoint &n : t.cell) {
        const Trace s = trace(h, n.x / 32767.5 * full_scale, n.y / 32767.5 * full_scale);
        // An ideal objective images onto a flat field: no focus change.
        const double want = h.focal_length != 0 ? 0.0 : -(s.path - axial) / h.field_size * 65535;
        ASSERT_NEAR(n.z, want, 1e-7) << n.x << ", " << n.y;
    }
}

INSTANTIATE_TEST_SUITE_P(Heads, CorrBaseHeads, ::testing::ValuesIn(kHeads));

TEST(CorrBase, FlatFieldYMirrorIgnoresX) {
    // Without an objective y = d tan(ay): a row shares one Y angle.
    const CorrTable t = base_table(kHeads[0]);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) ASSERT_EQ(at(t, r, c).y, at(t, r, 0).y) << r << ", " << c;
}

TEST(CorrBase, RealHeadIsFarFromNeutral) {
    // The X mirror, further from the field, uses less of the range.
    const CorrTable t = base_table(kHeads[0]);
    EXPECT_LT(at(t, 32, 64).x, 32767.5 * 0.95);
    EXPECT_EQ(at(t, 64, 32).y, 32767.5);
}

struct LimitCase {
    const char *name;
    CorrBase head;
};

class CorrBaseLimit : public ::testing::TestWithParam<LimitCase> {};

TEST_P(CorrBaseLimit, TendsToNeutral) {
    const CorrTable t = base_table(GetParam().head);
    for (int r = 0; r < 65; ++r) {
        for (int c = 0; c < 65; ++c) {
            ASSERT_NEAR(at(t, r, c).x, neutral(c), 1e-6) << r << ", " << c;
            ASSERT_NEAR(at(t, r, c).y, neutral(r), 1e-6) << r << ", " << c;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Heads, CorrBaseLimit,
                         ::testing::Values(LimitCase{"FlatFarNoGap", head(0, 1e9, 100)},
                                           LimitCase{"ObjectiveLongFocus",
                                                     head(20, 200, 100, 1e9)}),
                         [](const auto &info) { return std::string(info.param.name); });

struct BadHead {
    const char *name;
    CorrBase head;
    uint32_t status;
};

class CorrBaseRefused : public ::testing::TestWithParam<BadHead> {};

TEST_P(CorrBaseRefused, SetBaseLeavesTableAndScale) {
    CorrTable t;
    std::memset(&t, 0xAB, sizeof t);
    const CorrTable before = t;
    double full_scale = -7;
    EXPECT_EQ(vexo_corr_set_base(&t, &GetParam().head, &full_scale), GetParam().status);
    EXPECT_TRUE(same(t, before));
    EXPECT_EQ(full_scale, -7);
}

TEST_P(CorrBaseRefused, CalcAnglesWritesNothing) {
    // The field's corner: out of reach wherever a node is.
    const CorrBase &h = GetParam().head;
    double ax = -7, ay = -7;
    const double corner = std::isfinite(h.field_size) ? h.field_size / 2 : 1;
    const uint32_t status = vexo_corr_calc_base_angles(&h, corner, corner, &ax, &ay);
    EXPECT_EQ(status, GetParam().status);
    EXPECT_EQ(ax, -7);
    EXPECT_EQ(ay, -7);
}

constexpr double kInf = std::numeric_limits<double>::infinity();

INSTANTIATE_TEST_SUITE_P(
    Records, CorrBaseRefused,
    ::testing::Values(
        BadHead{"NegativeGap", head(-1, 180, 100), VEXO_ERROR_INVALID_PARAMETER},
        BadHead{"NanGap", head(NAN, 180, 100), VEXO_ERROR_INVALID_PARAMETER},
        BadHead{"ZeroDistance", head(10, 0, 100), VEXO_ERROR_INVALID_PARAMETER},
        BadHead{"NegativeDistance", head(10, -180, 100), VEXO_ERROR_INVALID_PARAMETER},
        BadHead{"InfiniteDistance", head(10, kInf, 100), VEXO_ERROR_INVALID_PARAMETER},
        BadHead{"NegativeDistanceWithObjective", head(10, -1, 100, 160),
                VEXO_ERROR_INVALID_PARAMETER},
        BadHead{"ZeroField", head(10, 180, 0), VEXO_ERROR_INVALID_PARAMETER},
        BadHead{"InfiniteField", head(10, 180, kInf), VEXO_ERROR_INVALID_PARAMETER},
        BadHead{"NegativeFocal", head(10, 180, 100, -160), VEXO_ERROR_INVALID_PARAMETER},
        BadHead{"NanFocal", head(10, 180, 100, NAN), VEXO_ERROR_INVALID_PARAMETER},
        BadHead{"UnknownOption", head(10, 180, 100, 0, 0x2), VEXO_ERROR_INVALID_PARAMETER},
        BadHead{"ReservedSet",
                [] {
                    CorrBase h = head(10, 180, 100);
                    h.reserved = 1;
                    return h;
                }(),
                VEXO_ERROR_INVALID_PARAMETER},
        // Corner at 28.3 behind a 10 lens: 162 degrees off the axis.
        BadHead{"BeyondTheObjective", head(10, 0, 40, 10), VEXO_ERROR_NUMERIC}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(CorrBase, AnglesThatVanishAreRefused) {
    CorrTable t;
    std::memset(&t, 0xAB, sizeof t);
    const CorrTable before = t;
    const CorrBase h = head(0, 0, 1e-300, 1e300);
    EXPECT_EQ(vexo_corr_set_base(&t, &h, nullptr), VEXO_ERROR_NUMERIC);
    EXPECT_TRUE(same(t, before));
}

TEST(CorrBase, NullArgumentsAreRefused) {
    CorrTable t = neutral_table();
    const CorrTable before = t;
    const CorrBase h = kHeads[0];
    double a = 0;
    EXPECT_EQ(vexo_corr_set_base(nullptr, &h, nullptr), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_set_base(&t, nullptr, nullptr), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_calc_base_angles(nullptr, 1, 1, &a, &a), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_calc_base_angles(&h, 1, 1, nullptr, &a), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_calc_base_angles(&h, 1, 1, &a, nullptr), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_TRUE(same(t, before));
}

TEST(CorrBase, PositionNotFiniteIsRefused) {
    const CorrBase h = kHeads[0];
    double ax = -7, ay = -7;
    EXPECT_EQ(vexo_corr_calc_base_angles(&h, NAN, 0, &ax, &ay), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_calc_base_angles(&h, 0, kInf, &ax, &ay), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(ax, -7);
    EXPECT_EQ(ay, -7);
}
