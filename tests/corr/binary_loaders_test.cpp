// SPDX-License-Identifier: MIT
// Each binary parser against files built here from values the test chose,
// and each writer against the file its format's loader read.
#include <functional>

#include "corr/loaders.hpp"
#include "corr/writers.hpp"
#include "fixtures.hpp"

using namespace vexo_test;

namespace {

using Parser = uint32_t (*)(vexo::ByteSpan, CorrTable &);
using Value = std::function<double(int row, int column, int axis)>;
constexpr double kHalf = 32767.5;
enum Layout { kCols, kRows, kCells };
enum Encoding { kLittle, kBig, kReal }; // kReal: f32 or f64, little-endian

// Appends an n x n grid of `bytes`-wide values, as whole planes or cell by cell.
ByteVec grid(ByteVec b, int n, std::vector<int> axes, Layout layout, int bytes, const Value &v,
             Encoding encoding = kLittle) {
    auto put = [&](double x) {
        uint64_t bits = uint64_t(int64_t(x));
        const float f = float(x);
        if (encoding == kReal) bytes == 4 ? std::memcpy(&bits, &f, 4) : std::memcpy(&bits, &x, 8);
        for (int i = 0; i < bytes; ++i)
            b.push_back(uint8_t(bits >> 8 * (encoding == kBig ? bytes - 1 - i : i)));
    };
    for (int p = 0; p < (layout == kCells ? 1 : int(axes.size())); ++p)
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j)
                for (int axis : layout == kCells ? axes : std::vector<int>{axes[size_t(p)]})
                    put(layout == kCols ? v(j, i, axis) : v(i, j, axis));
    return b;
}

ByteVec padded(std::string label, size_t size) {
    return label.resize(size), ByteVec(label.begin(), label.end());
}

// Stored values, and the cells they must give.
double word(int r, int c, int a) {
    return 1000 + 7 * r + 501 * c + 13 * a;
}
double ucf_cell(int r, int c, int a) {
    return word(r, c, a) - kHalf;
}
double no_z_cell(int r, int c, int a) {
    return a > 1 ? -kHalf : ucf_cell(r, c, a);
}
// fine row = entry within a line, fine column = line; Y words above 2^31
double ct5_word(int fr, int fc, int a) {
    return (a ? 0x9p28 : 0) + 1e5 * fc + 3 * fr + 1;
}
double ct5_cell(int r, int c, int a) {
    return a > 1 ? 0 : ct5_word(4 * r, 4 * c, a) / 16 - kHalf;
}
double gcd_offset(int r, int c, int a) {
    return a == 2 ? -65 * r - c : a ? 9 - r : c - 9;
}
// Offsets from a grid of pitch 1024, not the neutral 1023.984375.
double gcd_cell(int r, int c, int a) {
    return (a > 1 ? 0 : (a ? r : c) * 1024 - kHalf) + gcd_offset(r, c, a);
}
// The whole i32 range and both extremes (kxo decoding pairs values with SIMD).
double kxo_stored(int r, int c, int axis) {
    const uint32_t h = uint32_t(r * 65 + c + 4225 * axis) * 2654435761u;
    return r == 3 && c == 7 ? (axis ? INT32_MAX : INT32_MIN) : int32_t((h ^ h >> 15) * 2246822519u);
}
double kxo_cell(int r, int c, int a) {
    return kxo_stored(r, c, a) / 30000.0 - kHalf;
}
double crt_value(int r, int c, int a) {
    return a > 1 ? 9 : a ? -0.25 * r : float(0.1 * c);
}
double crt_cell(int r, int c, int a) {
    return a > 1 ? 0 : crt_value(r, c, a) * 500.0;
}
double cor_factor(int, int, int a) {
    return 2 - 2.5 * a;
}
double cor_delta(int r, int c, int a) {
    return a ? 2.0 * r - 0.25 : 0.5 * c - 3;
}
double cor_int_delta(int r, int c, int a) {
    return a ? 7 - 5 * r : 3 * c - 100;
}
double fcr_delta(int fr, int fc, int a) {
    return a ? (5 * fc - fr) % 150 : (3 * fr + fc) % 7;
}
// Fine line i reaches node (i + 1) / 2: node n sums lines 2n - 1 and 2n.
double fcr_cell(int r, int c, int axis) {
    double sum = axis > 1 ? 0 : neutral(axis ? r : c);
    for (int fr = std::max(2 * r - 1, 0); axis < 2 && fr <= std::min(2 * r, 127); ++fr)
        for (int fc = std::max(2 * c - 1, 0); fc <= std::min(2 * c, 127); ++fc)
            sum += fcr_delta(fr, fc, axis);
    return sum;
}

} // namespace

// Cells worked out by hand from the format descriptions, so that the
// expectations above (which share the parsers' arithmetic) have an
// independent check: gcd cells are (column or row) * 1024 plus the stored
// i16 offset, less 32767.5, with z the stored word.
TEST(CorrLoadBinary, GcdCellsWorkedByHand) {
    const ByteVec file = grid({}, 65, {2, 0, 1}, kCells, 2, gcd_offset);
    CorrTable t = neutral_table();
    ASSERT_EQ(vexo::parse_gcd({file.data(), file.size()}, t), VEXO_OK);
    // Stored x offset c - 9, y offset 9 - r, z -65r - c.
    EXPECT_EQ(xyz(at(t, 0, 0)), (Xyz{-32776.5, -32758.5, 0.0}));
    EXPECT_EQ(xyz(at(t, 1, 2)), (Xyz{-30726.5, -31735.5, -67.0}));
    EXPECT_EQ(xyz(at(t, 64, 64)), (Xyz{32823.5, 32713.5, -4224.0}));
}

// ct5 cells are unsigned 32-bit sixteenths less 32767.5, table cell (r, c)
// taken from entry 4r of line 4c; z is 0.
TEST(CorrLoadBinary, Ct5CellsWorkedByHand) {
    const ByteVec file = grid(padded("CT5", 64), 257, {1, 0}, kCols, 4, ct5_word);
    CorrTable t = neutral_table();
    ASSERT_EQ(vexo::parse_ct5({file.data(), file.size()}, t), VEXO_OK);
    // Stored x word 100000 * line + 3 * entry + 1; y the same plus 9 * 2^28.
    EXPECT_EQ(xyz(at(t, 0, 0)), (Xyz{-32767.4375, 150962176.5625, 0.0}));    // words 1, 2415919105
    EXPECT_EQ(xyz(at(t, 1, 2)), (Xyz{17233.3125, 151012177.3125, 0.0}));     // 800013, 2416719117
    EXPECT_EQ(xyz(at(t, 64, 64)), (Xyz{1567280.5625, 152562224.5625, 0.0})); // 25600769, ...873
}

TEST(CorrLoadBinary, KnownValuesFromAnyStartAndEveryTruncationFails) {
    const uint8_t head[12] = {0, 7, 0x12, 0x34, 0x99, 0xAA, 0xBB, 0xCC, 0x80, 0, 0, 1};
    const ByteVec two_planes = grid({}, 65, {1, 0}, kCols, 2, word);
    auto cor = [](double sx, double sy, double (*delta)(int, int, int) = cor_delta) {
        return [=](int r, int c, int a) {
            return a > 1 ? 0 : neutral(a ? r : c) - delta(r, c, a) * (a ? sy : sx);
        };
    };
    auto factors = [](std::string label, size_t at, std::vector<int> axes) { // f64 2, -0.5
        return grid(padded(label, at), 1, axes, kCells, 8, cor_factor, kReal);
    };
    const struct {
        const char *name;
        Parser parse;
        ByteVec file;
        int excess; // bytes after (or, negative, before) the data that are ignored
        Value expect;
        void (*encode)(const CorrTable &, uint8_t *) = nullptr; // the writer, which must give
        size_t from = 0;                                        // the file back from here on
    } cases[] = {
        {"ucf", vexo::parse_ucf, grid({'U', 'C', 'F', '1'}, 65, {1, 0, 2}, kCols, 2, word), 100,
         ucf_cell},
        // Exactly 16,900 bytes is the form without Z, which then reads as 0.
        {"ucf 16900", vexo::parse_ucf, two_planes, 0, no_z_cell},
        {"ctb", vexo::parse_ctb, two_planes, 100, no_z_cell, vexo::encode_ctb},
        {"ct5", vexo::parse_ct5, grid(padded("CT5", 64), 257, {1, 0}, kCols, 4, ct5_word), 100,
         ct5_cell},
        {"gcd", vexo::parse_gcd, grid({}, 65, {2, 0, 1}, kCells, 2, gcd_offset), 100, gcd_cell},
        {"kxo",
         [](auto file, CorrTable &t) {
             CorrHead h;
             return vexo::parse_kxo(file, t, h);
         },
         grid({head, head + 12}, 65, {0, 1, 2}, kCols, 4, kxo_stored, kBig), 100, kxo_cell,
         [](auto &t, auto *b) { vexo::encode_kxo(t, {}, b); }, 12},
        // The first value of each quadruple is y, the second x.
        {"crt", vexo::parse_crt,
         grid(padded("CRT", 2048), 65, {1, 0, 2, 2}, kCells, 4, crt_value, kReal), 100, crt_cell},
        {"cor JCZ_COR_3", vexo::parse_cor,
         grid(factors("JCZ_COR_3", 40, {0, 1}), 65, {0, 1}, kCells, 8, cor_delta, kReal), 100,
         cor(2, -0.5)},
        {"cor plain", vexo::parse_cor,
         grid(padded("plain", 519), 65, {0, 1}, kCells, 8, cor_delta, kReal), 100, cor(1, 1)},
        // The f64 galvo scale is not applied; the 4-byte zero trailer is optional.
        {"cor JCZ_COR_2_1", vexo::parse_cor,
         grid(factors("JCZ_COR_2_1", 28, {0}), 65, {0, 1}, kCells, 4, cor_int_delta), 4,
         cor(1, 1, cor_int_delta), [](auto &t, auto *b) { vexo::encode_cor21(t, 2, b); }},
        // Only the last 65,536 bytes count.
        {"fcr", vexo::parse_fcr, grid({}, 128, {0, 1}, kRows, 2, fcr_delta), -777, fcr_cell},
    };
    CorrTable garbage;
    std::memset(&garbage, 0x7F, sizeof garbage);
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const size_t size = c.file.size();
        ByteVec longer = c.file;
        longer.insert(c.excess < 0 ? longer.begin() : longer.end(), size_t(std::abs(c.excess)), 7);
        // Every cell is replaced, so the starting content does not matter.
        for (const ByteVec *file : {&c.file, const_cast<const ByteVec *>(&longer)}) {
            CorrTable t = file == &c.file ? neutral_table() : garbage;
            ASSERT_EQ(c.parse({file->data(), file->size()}, t), VEXO_OK);
            for (int k = 0; k < 3 * 4225; ++k)
                ASSERT_EQ(xyz(t.cell[k / 3])[k % 3u], c.expect(k / 195, k / 3 % 65, k % 3)) << k;
            if (ByteVec saved(size + 4); c.encode) { // room for the integer layout's trailer
                c.encode(t, saved.data());
                EXPECT_TRUE(std::equal(&c.file[c.from], c.file.data() + size, &saved[c.from]));
            }
        }
        // A prefix fails without writing a cell; an exact-size copy lets ASan
        // see a read past its end.
        std::vector<size_t> lengths = {0,   1,    4,    11,   12,    55,    56,      518,
                                       519, 2047, 2048, 8450, 16899, 16901, size - 1};
        for (size_t len = 97; len < size; len += 4999) lengths.push_back(len);
        for (size_t len : lengths) {
            const ByteVec prefix(c.file.begin(), c.file.begin() + long(std::min(len, size - 1)));
            CorrTable t = garbage;
            ASSERT_EQ(c.parse({prefix.data(), prefix.size()}, t), VEXO_ERROR_READ_FILE) << len;
            ASSERT_TRUE(same(t, garbage)) << len;
        }
    }
}
