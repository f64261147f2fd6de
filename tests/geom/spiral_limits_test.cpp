// SPDX-License-Identifier: MIT
// Spirals whose walk cannot reach its end radius are refused before a
// single point is made (count 0), instead of after the point limit.
#include <cmath>
#include <limits>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "vexo_test_util.hpp"

namespace {

using vexo_test::Points;

struct SpiralCase {
    const char *name;
    double inner, outer;
    uint8_t outward;
};

void PrintTo(const SpiralCase &c, std::ostream *os) {
    *os << c.name;
}

class SpiralRefused : public ::testing::TestWithParam<SpiralCase> {};

TEST_P(SpiralRefused, BeforeAnyPoint) {
    const SpiralCase c = GetParam();
    const GeomPoint centre = vexo_test::point(0, 0);
    uint32_t count = 99;
    Points p(
        vexo_geom_create_spiral(c.inner, c.outer, &centre, 0.0, 0.5, 24, 0, c.outward, &count));
    EXPECT_EQ(nullptr, p.get());
    EXPECT_EQ(0u, count);
}

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr SpiralCase kUnreachable[] = {
    {"InwardToMinusInfinity", -kInf, 5.0, 0}, {"InwardToMinus1e300", -1e300, 5.0, 0},
    {"InwardPastMinusOuter", -5.001, 5.0, 0}, {"InwardToNaN", NAN, 5.0, 0},
    {"InwardFromInfinity", 0.5, kInf, 0},     {"OutwardToNaN", 0.5, NAN, 1},
    {"OutwardFromNegative", -0.5, 5.0, 1},    {"OutwardFromMinusInfinity", -kInf, 5.0, 1}};
INSTANTIATE_TEST_SUITE_P(Radii, SpiralRefused, ::testing::ValuesIn(kUnreachable),
                         [](const ::testing::TestParamInfo<SpiralCase> &info) {
                             return std::string(info.param.name);
                         });

TEST(SpiralLimits, InwardToMinusTheOuterRadiusStillDrawn) {
    const GeomPoint centre = vexo_test::point(0, 0);
    uint32_t count = 0;
    Points p(vexo_geom_create_spiral(-5.0, 5.0, &centre, 0.0, 0.5, 24, 0, 0, &count));
    ASSERT_NE(nullptr, p.get());
    ASSERT_GT(count, 0u);
    EXPECT_EQ(VEXO_POINT_END, p.get()[count - 1].flags);
}

} // namespace
