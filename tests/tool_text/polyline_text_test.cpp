// SPDX-License-Identifier: MIT
// The tool's polyline text form: what a file means point by point, the
// message of every kind of bad line, and write -> read giving the same bytes.
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli.hpp"
#include "polyline_text.hpp"
#include "vexo_test_util.hpp"

namespace {

using vexo_test::coords;
using vexo_test::flags_of;
using vexo_test::point;
using vexo_test::xyz;
using vexo_test::Xyz;

constexpr uint32_t kEnd = VEXO_POINT_END | VEXO_POINT_END_MARK;

std::vector<GeomPoint> parse(const std::string &text) {
    return tool::parse_polylines(reinterpret_cast<const uint8_t *>(text.data()), text.size(),
                                 "in.txt");
}

// The message parse gives, or "" when it accepts the text.
std::string message_of(const std::string &text) {
    try {
        parse(text);
    } catch (const cli::Failure &e) {
        return e.what();
    }
    return "";
}

std::string written(const std::vector<GeomPoint> &points) {
    char *buffer = nullptr;
    size_t size = 0;
    std::FILE *out = open_memstream(&buffer, &size);
    EXPECT_NE(out, nullptr);
    EXPECT_TRUE(tool::write_polylines(out, points.data(), points.size()));
    std::fclose(out);
    std::string text(buffer, size);
    std::free(buffer);
    return text;
}

struct GoodCase {
    const char *text;
    std::vector<Xyz> coords;
    std::vector<uint32_t> flags;
};

void PrintTo(const GoodCase &c, std::ostream *os) {
    *os << '"' << c.text << '"';
}

class PolylineTextGood : public ::testing::TestWithParam<GoodCase> {};

// Two numbers give z 0; the last point of each polyline carries the end
// flags; a run of blank lines ends one polyline; comments end none.
TEST_P(PolylineTextGood, ReadsPointsAndPolylineEnds) {
    const auto pts = parse(GetParam().text);
    EXPECT_EQ(coords(pts), GetParam().coords);
    EXPECT_EQ(flags_of(pts), GetParam().flags);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PolylineTextGood,
    ::testing::Values(
        GoodCase{"1.5 -2\n", {{1.5, -2, 0}}, {kEnd}},
        GoodCase{"1 2 3e-2\n", {{1, 2, 0.03}}, {kEnd}}, GoodCase{"+1 +.5\n", {{1, 0.5, 0}}, {kEnd}},
        GoodCase{"0 0\n1 0\n1 1\n\n5 5\n6 6\n",
                 {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {5, 5, 0}, {6, 6, 0}},
                 {0, 0, kEnd, 0, kEnd}},
        GoodCase{"\n\n0 0\n1 1\n\n \t\n\n2 2\n3 3\n\n\n",
                 {{0, 0, 0}, {1, 1, 0}, {2, 2, 0}, {3, 3, 0}},
                 {0, kEnd, 0, kEnd}},
        GoodCase{"# outline\n0 0\n  # still the same\n1 1\n", {{0, 0, 0}, {1, 1, 0}}, {0, kEnd}},
        GoodCase{"3 4 # corner\n5 6#tight\n", {{3, 4, 0}, {5, 6, 0}}, {0, kEnd}},
        GoodCase{"0 0\n1 1\n\n7 8\n\n2 2\n3 3\n", // a lone point is a dot
                 {{0, 0, 0}, {1, 1, 0}, {7, 8, 0}, {2, 2, 0}, {3, 3, 0}},
                 {0, kEnd, kEnd, 0, kEnd}},
        GoodCase{"0 0\r\n1 2\r\n\r\n3 4\r\n", {{0, 0, 0}, {1, 2, 0}, {3, 4, 0}}, {0, kEnd, kEnd}},
        GoodCase{"", {}, {}}, GoodCase{"# nothing\n\n", {}, {}}));

TEST(PolylineText, NumbersIgnoreTheHostLocale) {
    const char *names[] = {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "C.UTF-8"};
    const std::string old = std::setlocale(LC_NUMERIC, nullptr);
    bool comma = false;
    for (const char *name : names)
        if (std::setlocale(LC_NUMERIC, name) && std::localeconv()->decimal_point[0] == ',') {
            comma = true;
            break;
        }
    if (!comma) {
        std::setlocale(LC_NUMERIC, old.c_str());
        GTEST_SKIP() << "no locale with a decimal comma installed";
    }
    const auto pts = parse("1.5 2.25\n");
    const std::string text = written({point(0.5, -1.25, 0, kEnd)});
    std::setlocale(LC_NUMERIC, old.c_str());
    ASSERT_EQ(pts.size(), 1u);
    EXPECT_EQ(xyz(pts[0]), (Xyz{1.5, 2.25, 0}));
    EXPECT_EQ(text, "0.5 -1.25\n");
}

struct BadCase {
    const char *text;
    const char *message;
};

void PrintTo(const BadCase &c, std::ostream *os) {
    *os << '"' << c.text << '"';
}

class PolylineTextBad : public ::testing::TestWithParam<BadCase> {};

TEST_P(PolylineTextBad, RefusedWithLineAndCause) {
    EXPECT_EQ(message_of(GetParam().text), GetParam().message) << "text: " << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PolylineTextBad,
    ::testing::Values(
        BadCase{"0 0\n1 x\n", "in.txt: line 2: 'x' is not a number"},
        BadCase{"0 0\n\n# c\n5\n", "in.txt: line 4: 1 number, a point needs 2 or 3 (x y [z])"},
        BadCase{"1 2 3 4\n", "in.txt: line 1: more than 3 numbers (a point is x y [z])"},
        BadCase{"nan 1\n", "in.txt: line 1: 'nan' is not finite"},
        BadCase{"1 -inf\n", "in.txt: line 1: '-inf' is not finite"},
        BadCase{"1e999 0\n", "in.txt: line 1: '1e999' is beyond the range of a double"},
        BadCase{"1 1e-400\n", "in.txt: line 1: '1e-400' is beyond the range of a double"},
        BadCase{"1,5 2\n", "in.txt: line 1: '1,5' is not a number"},
        BadCase{"0x10 1\n", "in.txt: line 1: '0x10' is not a number"},
        BadCase{"+-1 2\n", "in.txt: line 1: '+-1' is not a number"},
        BadCase{"1e 2\n", "in.txt: line 1: '1e' is not a number"},
        BadCase{"1 2\n3\t4\r\n5 6\r7\n", "in.txt: line 3: '6?7' is not a number"}));

TEST(PolylineText, LongBadTokenIsShortenedInTheMessage) {
    const std::string token(100, 'z');
    EXPECT_EQ(message_of("1 " + token + "\n"),
              "in.txt: line 1: '" + std::string(40, 'z') + "...' is not a number");
}

TEST(PolylineText, WriterSeparatesPolylinesByOneBlankLine) {
    const std::vector<GeomPoint> pts = {point(0, 0), point(1, 0, 0, kEnd), point(2.5, -3, 0, kEnd),
                                        point(4, 4), point(5, 5, 0, kEnd)};
    EXPECT_EQ(written(pts), "0 0\n1 0\n\n2.5 -3\n\n4 4\n5 5\n");
}

TEST(PolylineText, WriterAddsZWhenAnyZIsNotPositiveZero) {
    EXPECT_EQ(written({point(1, 2, -0.0, kEnd)}), "1 2 -0\n");
    EXPECT_EQ(written({point(1, 2), point(3, 4, 0.25, kEnd)}), "1 2 0\n3 4 0.25\n");
}

TEST(PolylineText, ShortestFormReadsBackExactly) {
    EXPECT_EQ(tool::format_number(0.1), "0.1");
    EXPECT_EQ(tool::format_number(-0.0), "-0");
    EXPECT_EQ(tool::format_number(1e300), "1e+300");
}

// Polylines of random doubles over the whole range (bit patterns, so
// subnormals, huge and tiny values and negative zero all occur).
std::vector<GeomPoint> random_polylines(std::mt19937_64 &rng, size_t count) {
    std::vector<GeomPoint> pts;
    auto any_finite = [&rng] {
        for (;;) {
            const uint64_t bits = rng();
            double v;
            std::memcpy(&v, &bits, sizeof v);
            if (std::isfinite(v)) return v;
        }
    };
    for (size_t i = 0; i < count; ++i)
        pts.push_back(point(any_finite(), any_finite(), any_finite(), rng() % 4 == 0 ? kEnd : 0));
    pts.back().flags = kEnd;
    return pts;
}

TEST(PolylineText, WriteThenReadGivesTheSameBytes) {
    std::mt19937_64 rng(20);
    std::vector<GeomPoint> pts = random_polylines(rng, 2000);
    pts.push_back(point(std::numeric_limits<double>::denorm_min(), -0.0,
                        std::numeric_limits<double>::max(), kEnd));
    pts.push_back(point(std::numeric_limits<double>::lowest(), std::numeric_limits<double>::min(),
                        -std::numeric_limits<double>::denorm_min(), kEnd));
    const auto back = parse(written(pts));
    ASSERT_EQ(back.size(), pts.size());
    for (size_t i = 0; i < pts.size(); ++i)
        ASSERT_TRUE(vexo_test::same_bytes(back[i], pts[i]))
            << "point " << i << ": wrote " << pts[i].x << " " << pts[i].y << " " << pts[i].z
            << " flags " << pts[i].flags << ", read " << back[i].x << " " << back[i].y << " "
            << back[i].z << " flags " << back[i].flags;
}

TEST(PolylineText, WriteThenReadKeepsTwoDimensionalPoints) {
    const std::vector<GeomPoint> pts = {point(0.1, 0.2), point(1.0 / 3, 2.0 / 3, 0, kEnd)};
    const auto back = parse(written(pts));
    ASSERT_EQ(back.size(), 2u);
    EXPECT_TRUE(vexo_test::same_bytes(back[0], pts[0], 2));
}

} // namespace
