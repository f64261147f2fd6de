// The three text formats (XML-like lists, ".txt" 5x5 records, ".scor" key
// files) and the locale-independent number reading beneath them.
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "corr/loaders.hpp"
#include "corr/text_numbers.hpp"
#include "fixtures.hpp"
#include "vexo.h"

namespace {

using vexo::ByteSpan;

std::unique_ptr<CorrTable> neutral_table() {
    auto table = std::make_unique<CorrTable>();
    std::memset(table.get(), 0, sizeof(CorrTable));
    vexo_corr_set_neutral(table.get());
    return table;
}

ByteSpan span(const std::string &s) {
    return {reinterpret_cast<const uint8_t *>(s.data()), s.size()};
}

const GeomPoint &at(const CorrTable &t, int row, int column) { return t.cell[row * 65 + column]; }

bool same(const CorrTable &a, const CorrTable &b) {
    return std::memcmp(&a, &b, sizeof(CorrTable)) == 0;
}

// ---------------------------------------------------------------- numbers

TEST(CorrTextNumbers, ConversionsFollowCRules) {
    double d = -1;
    EXPECT_EQ(vexo::read_double("  1.5e2x", d), 7u);
    EXPECT_EQ(d, 150.0);
    EXPECT_EQ(vexo::read_double("-0x1p-2", d), 7u);
    EXPECT_EQ(d, -0.25);
    EXPECT_EQ(vexo::read_double("inf", d), 3u);
    EXPECT_TRUE(std::isinf(d));
    EXPECT_EQ(vexo::read_double("1,5", d), 1u);
    EXPECT_EQ(d, 1.0);
    EXPECT_EQ(vexo::read_double("  abc", d), 0u);
    EXPECT_EQ(d, 0.0);
    EXPECT_EQ(vexo::read_double("", d), 0u);
    // Bounded by the view, not by a terminator.
    const char digits[] = "12345";
    EXPECT_EQ(vexo::read_double(std::string_view(digits, 2), d), 2u);
    EXPECT_EQ(d, 12.0);

    float f = 0;
    EXPECT_EQ(vexo::read_float("0.1", f), 3u);
    EXPECT_EQ(f, 0.1f);

    int32_t i = -1;
    EXPECT_EQ(vexo::read_int32(" -42,", i), 4u);
    EXPECT_EQ(i, -42);
    EXPECT_EQ(vexo::read_int32("+7", i), 2u);
    EXPECT_EQ(i, 7);
    EXPECT_EQ(vexo::read_int32("2147483647", i), 10u);
    EXPECT_EQ(i, INT32_MAX);
    EXPECT_EQ(vexo::read_int32("99999999999999999999999", i), 23u);
    EXPECT_EQ(i, INT32_MAX);
    EXPECT_EQ(vexo::read_int32("-2147483648", i), 11u);
    EXPECT_EQ(i, INT32_MIN);
    EXPECT_EQ(vexo::read_int32("-99999999999", i), 12u);
    EXPECT_EQ(i, INT32_MIN);
    EXPECT_EQ(vexo::read_int32("-", i), 0u);
    EXPECT_EQ(i, 0);
    EXPECT_EQ(vexo::read_int32(std::string_view(digits, 3), i), 3u);
    EXPECT_EQ(i, 123);
}

// -------------------------------------------------------------------- XML

// 4225 comma-separated values from value(row, column).
template <class F>
std::string xml_list(F value) {
    std::string s;
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c)
            s += std::to_string(value(r, c)) + ",";
    return s;
}

int x_value(int r, int c) { return (r * 7 + c * 3) % 201 - 100; }
int y_value(int r, int c) { return (r * 5 - c * 11) % 301; }
int z_value(int r, int c) { return r * 100 - c; }

TEST(CorrXml, ListsBecomeOffsetsOnThe1024Grid) {
    // y before x in the file: all tags are searched from just after "<Data".
    const std::string file = "<?xml?>\n<Data>\n<y-axis>" + xml_list(y_value) +
                             "</y-axis>\n<x-axis> " + xml_list(x_value) + "</x-axis>\n<z-axis>" +
                             xml_list(z_value) + "</z-axis></Data>";
    auto t = neutral_table();
    ASSERT_EQ(vexo::parse_xml(span(file), *t), VEXO_OK);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            ASSERT_EQ(at(*t, r, c).x, x_value(r, c) + c * 1024.0 - 32767.5);
            ASSERT_EQ(at(*t, r, c).y, y_value(r, c) + r * 1024.0 - 32767.5);
            ASSERT_EQ(at(*t, r, c).z, z_value(r, c));
        }
}

TEST(CorrXml, ValuesAreTruncatedTo16BitsAndShortListsReadZero) {
    const std::string file = "<Data <x-axis>70000, -40000 ,99999999999,junk,-7<y-axis>3";
    auto t = neutral_table();
    ASSERT_EQ(vexo::parse_xml(span(file), *t), VEXO_OK);
    EXPECT_EQ(at(*t, 0, 0).x, 4464 - 32767.5);             // 70000 - 65536
    EXPECT_EQ(at(*t, 0, 1).x, 25536 + 1024 - 32767.5);     // -40000 + 65536
    EXPECT_EQ(at(*t, 0, 2).x, -1 + 2048 - 32767.5);        // saturated, low bits
    EXPECT_EQ(at(*t, 0, 3).x, 0 + 3072 - 32767.5);         // not a number
    // "-7<y-axis>3" has no comma after it: the rest of the list reads 0.
    EXPECT_EQ(at(*t, 0, 4).x, -7 + 4096 - 32767.5);
    EXPECT_EQ(at(*t, 0, 5).x, 5120 - 32767.5);
    EXPECT_EQ(at(*t, 64, 64).x, 65536 - 32767.5);
    EXPECT_EQ(at(*t, 0, 0).y, 3 - 32767.5);
    EXPECT_EQ(at(*t, 1, 0).y, 1024 - 32767.5);
    // No z list: z keeps the neutral 0.
    EXPECT_EQ(at(*t, 10, 10).z, 0.0);
}

TEST(CorrXml, MissingTagsAreInvalidData) {
    struct Case {
        const char *text;
        bool x_written;
    };
    const Case cases[] = {
        {"", false},
        {"<x-axis>1,2<y-axis>3", false},             // no "<Data"
        {"<y-axis>1<Data><x-axis>5,", true},         // y only before "<Data"
        {"<Data><y-axis>1,2", false},                // no x list
        {"<Data", false},                            // ends inside the skip
        {"<Datax", false},
        {"<Data><x-axis>", true},                    // empty x list, no y
        {"<Dat<x-axis>1<y-axis>1", false},
    };
    for (const Case &c : cases) {
        auto t = neutral_table();
        EXPECT_EQ(vexo::parse_xml(span(c.text), *t), VEXO_ERROR_INVALID_DATA) << c.text;
        // x values read before a missing y list stay in the table.
        EXPECT_EQ(at(*t, 0, 1).x, c.x_written ? 1024 - 32767.5 : -31743.515625) << c.text;
    }
    // The text ends at a zero byte, as it does for a C-string reader.
    const std::string with_zero = std::string("<Data>\0<x-axis>1<y-axis>2", 25);
    auto t = neutral_table();
    EXPECT_EQ(vexo::parse_xml(span(with_zero), *t), VEXO_ERROR_INVALID_DATA);
}

// ------------------------------------------------------------------ .txt

// Records at the 5 x 5 nodes of a field of 100: row position A, column
// position B, y value C = 1.1 A, x value D = 0.9 B.
std::string txt_grid(const std::string &eol = "\n") {
    std::string s = "SIZE: 100" + eol;
    int index = 0;
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 5; ++j) {
            const double a = i * 25.0 - 50, b = j * 25.0 - 50;
            char record[160];
            std::snprintf(record, sizeof record, "%d%s%.17g%s%.17g%s%.17g%s%.17g%s", index++,
                          eol.c_str(), a, eol.c_str(), b, eol.c_str(), a * 1.1, eol.c_str(),
                          b * 0.9, eol.c_str());
            s += record;
        }
    return s;
}

TEST(CorrTxt, NodesFromRecordsAndLinearFillBetween) {
    for (const char *eol : {"\n", "\r\n"}) {
        auto t = neutral_table();
        ASSERT_EQ(vexo::parse_txt(span(txt_grid(eol)), *t), VEXO_OK);
        // The fourth record line is y, the fifth x.
        EXPECT_EQ(at(*t, 0, 0).y, (-50 * 1.1) * 65535 / 100);
        EXPECT_EQ(at(*t, 0, 0).x, (-50 * 0.9) * 65535 / 100);
        EXPECT_EQ(at(*t, 48, 16).y, (25 * 1.1) * 65535 / 100);
        // Linear data: the fill reproduces the line through the nodes.
        for (int r = 0; r < 65; ++r)
            for (int c = 0; c < 65; ++c) {
                ASSERT_NEAR(at(*t, r, c).y, (r / 64.0 * 100 - 50) * 1.1 * 655.35, 1e-9);
                ASSERT_NEAR(at(*t, r, c).x, (c / 64.0 * 100 - 50) * 0.9 * 655.35, 1e-9);
                ASSERT_EQ(at(*t, r, c).z, 0.0);
            }
    }
}

TEST(CorrTxt, HeaderOnlyOrPartialRecordLeavesTheNeutralTable) {
    auto neutral = neutral_table();
    for (const char *text :
         {"SIZE: 100\n", "SIZE:100", "SIZE: 100\n0\n1\n2\n3\n", "SIZE: 50\n\n\n\n"}) {
        auto t = neutral_table();
        EXPECT_EQ(vexo::parse_txt(span(text), *t), VEXO_OK) << text;
        EXPECT_TRUE(same(*t, *neutral)) << text;
    }
}

TEST(CorrTxt, LongLinesArriveInPiecesOf99Characters) {
    // A 98-character index line fits one read: the record is (0, 0, 5, 6).
    const std::string fits = "SIZE: 100\n" + std::string(98, '7') + "\n0\n0\n5\n6\n";
    auto t = neutral_table();
    ASSERT_EQ(vexo::parse_txt(span(fits), *t), VEXO_OK);
    EXPECT_EQ(at(*t, 32, 32).y, 5 * 65535 / 100.0);
    EXPECT_EQ(at(*t, 32, 32).x, 6 * 65535 / 100.0);
    // At 99 characters the newline is a read of its own, and every later
    // line moves up one place in the record.
    const std::string split = "SIZE: 100\n" + std::string(99, '7') + "\n0\n0\n5\n6\n";
    t = neutral_table();
    ASSERT_EQ(vexo::parse_txt(span(split), *t), VEXO_OK);
    EXPECT_EQ(at(*t, 32, 32).y, 0.0);
    EXPECT_EQ(at(*t, 32, 32).x, 5 * 65535 / 100.0);
    // Longer still, the tail of the index line is read as the row position.
    const std::string tail = "SIZE: 100\n" + std::string(120, '7') + "\n0\n0\n5\n6\n";
    t = neutral_table();
    EXPECT_EQ(vexo::parse_txt(span(tail), *t), VEXO_ERROR_INVALID_DATA);
}

TEST(CorrTxt, BadHeaderFieldOrNodeIsRefused) {
    struct Case {
        std::string text;
        uint32_t status;
    };
    const Case cases[] = {
        {"", VEXO_ERROR_INVALID_HEADER},
        {"size: 100\n", VEXO_ERROR_INVALID_HEADER},
        {"\nSIZE: 100\n", VEXO_ERROR_INVALID_HEADER},
        {"SIZE: 0\n", VEXO_ERROR_INVALID_DATA},
        {"SIZE: abc\n", VEXO_ERROR_INVALID_DATA},
        {"SIZE: nan\n", VEXO_ERROR_INVALID_DATA},
        {"SIZE: -inf\n", VEXO_ERROR_INVALID_DATA},
        {"xSIZE: 100\n", VEXO_ERROR_INVALID_DATA}, // read from the 6th character: ": 100"
        {"SIZE: 100\n0\n60\n0\n1\n1\n", VEXO_ERROR_INVALID_DATA},   // row 70.4
        {"SIZE: 100\n0\n-60\n0\n1\n1\n", VEXO_ERROR_INVALID_DATA},  // row -6
        {"SIZE: 100\n0\n0\n52\n1\n1\n", VEXO_ERROR_INVALID_DATA},   // column 65.28
        {"SIZE: 100\n0\nnan\n0\n1\n1\n", VEXO_ERROR_INVALID_DATA},
        {"SIZE: 100\n0\n0\n1e300\n1\n1\n", VEXO_ERROR_INVALID_DATA},
    };
    for (const Case &c : cases) {
        auto t = neutral_table();
        EXPECT_EQ(vexo::parse_txt(span(c.text), *t), c.status) << c.text;
    }
    // Positions are truncated toward zero: just below the near edge still
    // lands on line 0, just past the far edge on line 64.
    auto t = neutral_table();
    EXPECT_EQ(vexo::parse_txt(span("SIZE: 100\n0\n51\n-51\n1\n2\n"), *t), VEXO_OK);
    EXPECT_EQ(at(*t, 64, 0).y, 1 * 65535 / 100.0);
    EXPECT_EQ(at(*t, 64, 0).x, 2 * 65535 / 100.0);
}

// ----------------------------------------------------------------- .scor

struct ScorEntry {
    const char *key;
    int i, j;
    double value;
};

std::string scor_file(int n, const std::vector<ScorEntry> &entries,
                      const std::string &range_y = "100") {
    std::string s = "[LMCorrectData]\nRangeX=100.0\nRangeY=" + range_y +
                    "\nZBasePos=5\nXSize=" + std::to_string(n) +
                    "\nYSize=" + std::to_string(n) + "\n";
    for (const ScorEntry &e : entries) {
        char line[96];
        std::snprintf(line, sizeof line, "%s-%d-%d=%.9g\n", e.key, e.i, e.j, e.value);
        s += line;
    }
    return s;
}

// A 3 x 3 measurement with every coordinate different.
std::vector<ScorEntry> scor_entries() {
    std::vector<ScorEntry> v;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            const double nx = i * 30.0 - 30, ny = j * 30.0 - 30;
            v.push_back({"X", i, j, nx});
            v.push_back({"Y", i, j, ny});
            v.push_back({"MX", i, j, nx + 0.25 * j + 0.1});
            v.push_back({"MY", i, j, ny - 0.5 * i + 0.3});
        }
    return v;
}

TEST(CorrScor, GridsReachTheInterpolationWithTheSecondIndexMirrored) {
    auto loaded = neutral_table();
    ASSERT_EQ(vexo::parse_scor(span(scor_file(3, scor_entries())), *loaded), VEXO_OK);

    // The same grids built by hand: entry (i, j) belongs to cell i*3 + 2 - j,
    // values rounded to single precision.
    std::vector<GeomPoint> nominal(9), measured(9);
    for (const ScorEntry &e : scor_entries()) {
        const int k = e.i * 3 + (2 - e.j);
        const double v = static_cast<float>(e.value);
        if (e.key[0] == 'M')
            (e.key[1] == 'X' ? measured[k].x : measured[k].y) = v;
        else
            (e.key[0] == 'X' ? nominal[k].x : nominal[k].y) = v;
    }
    auto expected = neutral_table();
    ASSERT_EQ(vexo_corr_interpolate(3, measured.data(), nominal.data(), 100, expected.get()),
              VEXO_OK);
    EXPECT_TRUE(same(*loaded, *expected));
    // Mirrored: the nominal y of entry j = 0 (-30) ends at the far row.
    EXPECT_LT(at(*loaded, 64, 32).y, -10000.0);
    EXPECT_GT(at(*loaded, 0, 32).y, 10000.0);

    // RangeY is read but plays no part.
    auto other_y = neutral_table();
    ASSERT_EQ(vexo::parse_scor(span(scor_file(3, scor_entries(), "7")), *other_y), VEXO_OK);
    EXPECT_TRUE(same(*other_y, *loaded));
}

TEST(CorrScor, SingleEntryByHand) {
    // Only nominal X-1-1 = 10 in a 2 x 2 grid: pre-distorted node (1, 0) has
    // x = 20, scale 655.355.
    auto t = neutral_table();
    ASSERT_EQ(vexo::parse_scor(span(scor_file(2, {{"X", 1, 1, 10}})), *t), VEXO_OK);
    const double f = 64.0 / 65;
    EXPECT_DOUBLE_EQ(at(*t, 0, 64).x, f * 20 * 655.355);
    EXPECT_DOUBLE_EQ(at(*t, 64, 64).x, (1 - f) * f * 20 * 655.355);
    EXPECT_EQ(at(*t, 0, 0).x, 0.0);
    EXPECT_EQ(at(*t, 0, 64).z, 0.0);

    // Header lines after the point where it is complete are data lines, and
    // lines that are not grid entries are skipped.
    const std::string later = "[LMCorrectData]\nXSize=2\nYSize=2\nXSize=9\nX-a-b=3\n"
                              "X-1-1 =5\nnote\nX-1-1=10\n";
    auto u = neutral_table();
    ASSERT_EQ(vexo::parse_scor(span(later), *u), VEXO_OK);
    EXPECT_TRUE(same(*t, *u));
}

TEST(CorrScor, BadFilesGetTheirStatus) {
    struct Case {
        std::string text;
        uint32_t status;
    };
    const std::string head = "[LMCorrectData]\n";
    const Case cases[] = {
        {"", VEXO_ERROR_READ_FILE},
        {"[LMCorrectDat]\nXSize=2\nYSize=2\n", VEXO_ERROR_READ_FILE},
        {" [LMCorrectData]\nXSize=2\nYSize=2\n", VEXO_ERROR_READ_FILE},
        {head, VEXO_ERROR_INVALID_HEADER},                               // no sizes
        {head + "XSize=2\n", VEXO_ERROR_INVALID_HEADER},                 // end of file
        {head + "XSize=16\nYSize=16\n", VEXO_ERROR_INVALID_HEADER},
        {head + "XSize=2\nYSize=3\n", VEXO_ERROR_INVALID_HEADER},
        {head + "XSize=-2\nYSize=-2\n", VEXO_ERROR_INVALID_HEADER},
        {head + "XSize=0\nYSize=0\n", VEXO_ERROR_INVALID_HEADER},        // never complete
        {head + "RangeX=0\nXSize=2\nYSize=2\n", VEXO_ERROR_INVALID_HEADER},
        {head + "XSize=99999999999\nYSize=99999999999\n", VEXO_ERROR_INVALID_HEADER},
        {head + "XSize=2\nYSize=2\nX-2-0=1\n", VEXO_ERROR_INVALID_DATA},
        {head + "XSize=2\nYSize=2\nY-0-2=1\n", VEXO_ERROR_INVALID_DATA},
        {head + "XSize=2\nYSize=2\nMX--1-0=1\n", VEXO_ERROR_INVALID_DATA},
        {head + "XSize=2\nYSize=2\nMY-0-5=1\n", VEXO_ERROR_INVALID_DATA},
        {head + "XSize=15\nYSize=15\nX-14-14=1\n", VEXO_OK},
        {head + "XSize=1\nYSize=1\n", VEXO_OK},
        {"[LMCorrectData] with a long tail\nXSize=1\nYSize=1\n", VEXO_OK},
    };
    for (const Case &c : cases) {
        auto t = neutral_table();
        EXPECT_EQ(vexo::parse_scor(span(c.text), *t), c.status) << c.text;
    }
}

// ------------------------------------------------------- locale, files

TEST(CorrTextLoaders, DecimalCommaLocaleDoesNotChangeNumbers) {
    auto txt_c = neutral_table();
    auto scor_c = neutral_table();
    const std::string txt = txt_grid();
    const std::string scor = scor_file(3, scor_entries());
    ASSERT_EQ(vexo::parse_txt(span(txt), *txt_c), VEXO_OK);
    ASSERT_EQ(vexo::parse_scor(span(scor), *scor_c), VEXO_OK);

    const std::string previous = std::setlocale(LC_ALL, nullptr);
    const char *found = nullptr;
    for (const char *name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "nl_NL.UTF-8",
                             "ru_RU.UTF-8", "es_ES.UTF-8", "it_IT.UTF-8"}) {
        if (std::setlocale(LC_ALL, name) && *std::localeconv()->decimal_point == ',') {
            found = name;
            break;
        }
    }
    if (!found) {
        std::setlocale(LC_ALL, previous.c_str());
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    }
    auto txt_l = neutral_table();
    auto scor_l = neutral_table();
    const uint32_t txt_status = vexo::parse_txt(span(txt), *txt_l);
    const uint32_t scor_status = vexo::parse_scor(span(scor), *scor_l);
    std::setlocale(LC_ALL, previous.c_str());
    EXPECT_EQ(txt_status, VEXO_OK) << found;
    EXPECT_EQ(scor_status, VEXO_OK) << found;
    EXPECT_TRUE(same(*txt_l, *txt_c)) << found;
    EXPECT_TRUE(same(*scor_l, *scor_c)) << found;
}

TEST(CorrTextLoaders, FilesLoadByExtensionAndNumber) {
    const std::string scor = scor_file(3, scor_entries());
    const std::string txt = txt_grid();
    const std::string xml = "<Data><x-axis>5,6<y-axis>7";
    const std::string scor_path = vexo_test::scratch_path("grid.scor");
    const std::string txt_path = vexo_test::scratch_path("grid.txt");
    const std::string xml_path = vexo_test::scratch_path("grid.dat");
    vexo_test::write_file(scor_path, vexo_test::ByteVec(scor.begin(), scor.end()));
    vexo_test::write_file(txt_path, vexo_test::ByteVec(txt.begin(), txt.end()));
    vexo_test::write_file(xml_path, vexo_test::ByteVec(xml.begin(), xml.end()));

    const struct {
        const std::string &path;
        uint32_t format;
        const std::string &text;
        uint32_t (*parse)(ByteSpan, CorrTable &);
    } cases[] = {{scor_path, VEXO_CORR_FORMAT_AUTO, scor, vexo::parse_scor},
                 {txt_path, VEXO_CORR_FORMAT_AUTO, txt, vexo::parse_txt},
                 {xml_path, VEXO_CORR_FORMAT_XML, xml, vexo::parse_xml}};
    for (const auto &c : cases) {
        auto from_file = std::make_unique<CorrTable>();
        std::memset(from_file.get(), 0x55, sizeof(CorrTable));
        ASSERT_EQ(vexo_corr_load_corr65(from_file.get(), c.path.c_str(), c.format), VEXO_OK)
            << c.path;
        auto direct = std::make_unique<CorrTable>();
        std::memset(direct.get(), 0x55, sizeof(CorrTable));
        vexo_corr_set_neutral(direct.get());
        ASSERT_EQ(c.parse(span(c.text), *direct), VEXO_OK);
        EXPECT_TRUE(same(*from_file, *direct)) << c.path;
    }
}

} // namespace
