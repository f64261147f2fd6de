// SPDX-License-Identifier: MIT
// The text formats: XML-like lists, ".txt" 5 x 5 records, ".scor" key files.
#include <clocale>
#include <sstream>

#include "corr/loaders.hpp"
#include "fixtures.hpp"

using namespace vexo_test;

namespace {

using Parser = uint32_t (*)(vexo::ByteSpan, CorrTable &);
constexpr Parser kXml = vexo::parse_xml, kTxt = vexo::parse_txt, kScor = vexo::parse_scor;

uint32_t parse(Parser p, const std::string &text, CorrTable &t) {
    return p({reinterpret_cast<const uint8_t *>(text.data()), text.size()}, t);
}

// Records at the 5 x 5 nodes of a field of 100: row position A, column
// position B, then y = 1.1 A and x = 0.9 B.
std::string txt_grid(const std::string &eol = "\n") {
    std::ostringstream s;
    s.precision(17);
    s << "SIZE: 100" << eol;
    for (int i = 0; i < 25; ++i) {
        const double a = i / 5 * 25.0 - 50, b = i % 5 * 25.0 - 50;
        s << i << eol << a << eol << b << eol << a * 1.1 << eol << b * 0.9 << eol;
    }
    return s.str();
}

// A 3 x 3 measurement with every coordinate different: X, Y, MX, MY.
double scor_value(int i, int j, int key) {
    return key % 2 ? j * 30.0 - 30 + (key > 1 ? 0.3 - 0.5 * i : 0)
                   : i * 30.0 - 30 + (key > 1 ? 0.1 + 0.25 * j : 0);
}

// GCC 12 at -O2 drops a plain float() rounding of such pairs when it
// vectorises them; the volatile keeps it.
double f32(double v) {
    volatile float f = float(v);
    return f;
}

std::string scor_file(const std::string &range_y = "100") {
    const char *const keys[] = {"X", "Y", "MX", "MY"};
    std::ostringstream s;
    s.precision(9);
    s << "[LMCorrectData]\nRangeX=100.0\nRangeY=" << range_y << "\nZBasePos=5\nXSize=3\nYSize=3\n";
    for (int k = 0; k < 36; ++k)
        s << keys[k % 4] << '-' << k / 12 << '-' << k / 4 % 3 << '='
          << scor_value(k / 12, k / 4 % 3, k % 4) << '\n';
    return s.str();
}

} // namespace

TEST(CorrTextLoaders, BadInputGetsItsStatus) {
    const std::string lm = "[LMCorrectData]\n", two = lm + "XSize=2\nYSize=2\n";
    const std::string txt = "SIZE: 100\n0\n";
    const struct {
        Parser parse;
        uint32_t status;
        std::vector<std::string> texts;
    } groups[] = {
        // "<y-axis>" before "<Data" does not count; the text ends at a zero byte.
        {kXml,
         7,
         {"",
          "<Dat<x-axis>1<y-axis>1",
          "<y-axis>1<Data><x-axis>5,",
          "<Data><y-axis>1",
          "<Data",
          "<Datax",
          "<Data><x-axis>",
          {"<Data>\0<x-axis>1<y-axis>2", 25}}},
        {kTxt, 25, {"", "size: 100\n", "\nSIZE: 100\n"}},
        // The header alone, or a partial record, is no record at all.
        {kTxt, 1, {"SIZE: 100\n", "SIZE:100", "SIZE: 100\n0\n1\n2\n3\n", "SIZE: 9\n\n"}},
        // The size is read from the 6th character; rows 70.4 and -6, column 65.28.
        {kTxt,
         7,
         {"SIZE: 0\n", "SIZE: abc\n", "SIZE: nan\n", "SIZE: -inf\n", "xSIZE: 100\n",
          txt + "60\n0\n1\n1\n", txt + "-60\n0\n1\n1\n", txt + "0\n52\n1\n1\n",
          txt + "nan\n0\n1\n1\n", txt + "0\n1e300\n1\n1\n"}},
        {kScor, 21, {"", "[LMCorrectDat]\nXSize=2\nYSize=2\n", " " + two}},
        // The end of the file before both sizes counts as a bad header.
        {kScor,
         25,
         {lm, lm + "XSize=2\n", lm + "XSize=16\nYSize=16\n", lm + "XSize=2\nYSize=3\n",
          lm + "XSize=-2\nYSize=-2\n", lm + "XSize=0\nYSize=0\n",
          lm + "RangeX=0\nXSize=2\nYSize=2\n", lm + "XSize=99999999999\nYSize=99999999999\n"}},
        {kScor, 7, {two + "X-2-0=1\n", two + "Y-0-2=1\n", two + "MX--1-0=1\n", two + "MY-0-5=1\n"}},
        {kScor,
         1,
         {lm + "XSize=15\nYSize=15\nX-14-14=1\n", lm + "XSize=1\nYSize=1\n",
          "[LMCorrectData] with a long tail\nXSize=1\nYSize=1\n"}},
    };
    for (const auto &g : groups)
        for (const std::string &text : g.texts) {
            CorrTable t = neutral_table();
            EXPECT_EQ(parse(g.parse, text, t), g.status) << text;
            if (g.parse == kTxt) { // nothing written
                EXPECT_TRUE(same(t, neutral_table())) << text;
            }
        }
}

TEST(CorrXml, ListsOnThe1024GridAllSearchedFromData) {
    auto value = [](int k, int axis) { // of cell k = 65 r + c
        const int r = k / 65, c = k % 65;
        return axis == 0   ? (r * 7 + c * 3) % 201 - 100
               : axis == 1 ? (r * 5 - c * 11) % 301
                           : r * 100 - c * 300;
    };
    auto list = [&](int axis) {
        std::string s;
        for (int k = 0; k < 4225; ++k) s += std::to_string(value(k, axis)) + ",";
        return s;
    };
    const std::string file = "<?xml?>\n<Data>\n<y-axis>" + list(1) + "</y-axis>\n<x-axis> " +
                             list(0) + "</x-axis>\n<z-axis>" + list(2) + "</z-axis></Data>";
    CorrTable t = neutral_table();
    ASSERT_EQ(parse(kXml, file, t), VEXO_OK);
    for (int k = 0; k < 4225; ++k) // z raw
        ASSERT_TRUE(xyz(t.cell[k]) ==
                    (Xyz{value(k, 0) + k % 65 * 1024.0 - 32767.5,
                         value(k, 1) + k / 65 * 1024.0 - 32767.5, double(value(k, 2))}))
            << k;
    // C integers truncated to 16 bits (saturating at 32 first); after the
    // last comma every value reads 0; without a z list z stays 0.
    t = neutral_table();
    const std::string odd = "<Data <x-axis>70000, -40000 ,99999999999,-99999999999,+7,junk,-7";
    ASSERT_EQ(parse(kXml, odd + "<y-axis>3", t), VEXO_OK);
    const double x_read[] = {70000 - 65536, -40000 + 65536, -1, 0, 7, 0, -7, 0};
    for (int c = 0; c < 8; ++c) EXPECT_EQ(at(t, 0, c).x, x_read[c] + c * 1024 - 32767.5) << c;
    EXPECT_EQ(at(t, 64, 64).x, 65536 - 32767.5);
    EXPECT_EQ(at(t, 0, 0).y, 3 - 32767.5);
    EXPECT_EQ(at(t, 1, 0).y, 1024 - 32767.5);
    EXPECT_EQ(at(t, 10, 10).z, 0.0);
}

TEST(CorrTxt, FourthLineIsYFillIsLinearAndLongLinesSplit) {
    for (const char *eol : {"\n", "\r\n"}) {
        CorrTable t = neutral_table();
        ASSERT_EQ(parse(kTxt, txt_grid(eol), t), VEXO_OK);
        EXPECT_EQ(at(t, 0, 0).y, (-50 * 1.1) * 65535 / 100);
        EXPECT_EQ(at(t, 0, 0).x, (-50 * 0.9) * 65535 / 100);
        for (int k = 0; k < 4225; ++k) {
            ASSERT_NEAR(t.cell[k].y, (k / 65 / 64.0 * 100 - 50) * 1.1 * 655.35, 1e-9);
            ASSERT_NEAR(t.cell[k].x, (k % 65 / 64.0 * 100 - 50) * 0.9 * 655.35, 1e-9);
            ASSERT_EQ(t.cell[k].z, 0.0);
        }
    }
    // Positions truncate toward zero: just outside the field is still line 0 or 64.
    CorrTable t = neutral_table();
    EXPECT_EQ(parse(kTxt, "SIZE: 100\n0\n51\n-51\n1\n2\n", t), VEXO_OK);
    EXPECT_EQ(at(t, 64, 0).y, 655.35);
    EXPECT_EQ(at(t, 64, 0).x, 1310.7);
    // Lines arrive in pieces of 99 characters: a 99-character index line
    // leaves its newline as a line of its own, shifting the record by one;
    // a longer one puts its tail into the row position.
    const struct {
        size_t length;
        uint32_t status;
        double y, x;
    } cases[] = {{98, VEXO_OK, 5, 6}, {99, VEXO_OK, 0, 5}, {120, VEXO_ERROR_INVALID_DATA, 0, 0}};
    for (const auto &c : cases) {
        t = neutral_table();
        const std::string text = "SIZE: 100\n" + std::string(c.length, '7') + "\n0\n0\n5\n6\n";
        EXPECT_EQ(parse(kTxt, text, t), c.status);
        if (c.status != VEXO_OK) continue;
        EXPECT_EQ(at(t, 32, 32).y, c.y * 65535 / 100) << c.length;
        EXPECT_EQ(at(t, 32, 32).x, c.x * 65535 / 100) << c.length;
    }
}

TEST(CorrScor, SecondIndexMirroredIntoTheInterpolation) {
    CorrTable loaded = neutral_table(), other_range_y = neutral_table(), expected;
    ASSERT_EQ(parse(kScor, scor_file(), loaded), VEXO_OK);
    // The same grids by hand: entry (i, j) is cell i * 3 + 2 - j, in single precision.
    std::vector<GeomPoint> nominal, measured;
    for (int k = 0; k < 9; ++k) {
        const int i = k / 3, j = 2 - k % 3;
        nominal.push_back(point(f32(scor_value(i, j, 0)), f32(scor_value(i, j, 1))));
        measured.push_back(point(f32(scor_value(i, j, 2)), f32(scor_value(i, j, 3))));
    }
    ASSERT_EQ(vexo_corr_interpolate(3, measured.data(), nominal.data(), 100, &expected), VEXO_OK);
    EXPECT_TRUE(same(loaded, expected));
    ASSERT_EQ(parse(kScor, scor_file("7"), other_range_y), VEXO_OK); // RangeY plays no part
    EXPECT_TRUE(same(other_range_y, loaded));
    // Without RangeX the range is 100: only nominal X-1-1 = 10 in a 2 x 2
    // grid pre-distorts node (1, 0) to x = 20. Header keys after a complete
    // header, and partial entries, are skipped.
    const std::string lm = "[LMCorrectData]\nXSize=2\nYSize=2\n";
    CorrTable t = neutral_table(), u = neutral_table();
    ASSERT_EQ(parse(kScor, lm + "X-1-1=10\n", t), VEXO_OK);
    EXPECT_DOUBLE_EQ(at(t, 0, 64).x, 64.0 / 65 * 20 * 655.355);
    ASSERT_EQ(parse(kScor, lm + "XSize=9\nX-a-b=3\nX-1-1 =5\nnote\nX-1-1=10\n", u), VEXO_OK);
    EXPECT_TRUE(same(t, u));
}

TEST(CorrTextLoaders, DecimalCommaLocaleDoesNotChangeNumbers) {
    const std::string txt = txt_grid(), scor = scor_file(); // written with decimal points
    CorrTable txt_c = neutral_table(), scor_c = neutral_table(), txt_l = txt_c, scor_l = scor_c;
    ASSERT_EQ(parse(kTxt, txt, txt_c), VEXO_OK);
    ASSERT_EQ(parse(kScor, scor, scor_c), VEXO_OK);
    const std::string previous = std::setlocale(LC_ALL, nullptr);
    const char *found = nullptr;
    for (const char *name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "nl_NL.UTF-8",
                             "ru_RU.UTF-8", "es_ES.UTF-8", "it_IT.UTF-8"})
        if (!found && std::setlocale(LC_ALL, name) && *std::localeconv()->decimal_point == ',')
            found = name;
    const bool parsed =
        found && parse(kTxt, txt, txt_l) == VEXO_OK && parse(kScor, scor, scor_l) == VEXO_OK;
    std::setlocale(LC_ALL, previous.c_str());
    if (!found) GTEST_SKIP() << "no locale with a decimal comma is installed";
    EXPECT_TRUE(parsed) << found;
    EXPECT_TRUE(same(txt_l, txt_c)) << found;
    EXPECT_TRUE(same(scor_l, scor_c)) << found;
}
