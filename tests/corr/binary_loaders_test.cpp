// Each binary parser against files built from values the test chose.
#include <algorithm>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "corr/loaders.hpp"
#include "fixtures.hpp"
#include "vexo.h"

using namespace vexo_test;

namespace {

CorrTable neutral_table() {
    CorrTable t;
    vexo_corr_set_neutral(&t);
    return t;
}

vexo::ByteSpan span(const ByteVec &v) { return vexo::ByteSpan{v.data(), v.size()}; }

const GeomPoint &at(const CorrTable &t, int r, int c) { return t.cell[r * 65 + c]; }

// Word values distinct per cell and axis, inside 0..65535.
double word(int r, int c, int axis) { return 1000 + 7 * r + 501 * c + 13 * axis; }

using Parser = uint32_t (*)(vexo::ByteSpan, CorrTable &);

// Every prefix length in `lengths` shorter than the full file must fail 21
// without reading past the prefix (ASan sees an exact-size copy) and
// without writing a single cell.
void expect_truncations_fail(Parser parse, const ByteVec &file, const std::vector<size_t> &skip) {
    std::vector<size_t> lengths = {0, 1, 3, 4, 11, 12, 55, 56, 518, 519, 2047, 2048};
    for (size_t len = 97; len < file.size(); len += 997)
        lengths.push_back(len);
    lengths.push_back(file.size() - 1);
    CorrTable before;
    std::memset(&before, 0xAB, sizeof before);
    for (size_t len : lengths) {
        if (len >= file.size() || std::find(skip.begin(), skip.end(), len) != skip.end())
            continue;
        ByteVec prefix(file.begin(), file.begin() + long(len));
        CorrTable t = before;
        ASSERT_EQ(parse(span(prefix), t), VEXO_ERROR_READ_FILE) << "length " << len;
        ASSERT_EQ(std::memcmp(&t, &before, sizeof t), 0) << "cells written, length " << len;
    }
}

// The loader skips the neutral fill before a binary parser, so each must
// give the same x, y, z from any starting table as from a neutral one.
void expect_independent_of_start(Parser parse, const ByteVec &file) {
    CorrTable from_neutral = neutral_table();
    CorrTable from_garbage;
    std::memset(&from_garbage, 0x7F, sizeof from_garbage);
    ASSERT_EQ(parse(span(file), from_neutral), VEXO_OK);
    ASSERT_EQ(parse(span(file), from_garbage), VEXO_OK);
    for (int k = 0; k < 4225; ++k) {
        ASSERT_EQ(from_garbage.cell[k].x, from_neutral.cell[k].x) << k;
        ASSERT_EQ(from_garbage.cell[k].y, from_neutral.cell[k].y) << k;
        ASSERT_EQ(from_garbage.cell[k].z, from_neutral.cell[k].z) << k;
    }
}

} // namespace

TEST(CorrLoadUcf, ThreePlanesWithHeader) {
    const ByteVec file = ucf_file(word, true);
    ASSERT_EQ(file.size(), 4u + 25350u);
    CorrTable t = neutral_table();
    ASSERT_EQ(vexo::parse_ucf(span(file), t), VEXO_OK);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            ASSERT_EQ(at(t, r, c).x, word(r, c, 0) - 32767.5);
            ASSERT_EQ(at(t, r, c).y, word(r, c, 1) - 32767.5);
            ASSERT_EQ(at(t, r, c).z, word(r, c, 2) - 32767.5);
        }
    // Column-major by hand: X plane entry 1 is row 1, column 0.
    ByteVec zero(4 + 25350, 0);
    zero[4 + 8450 + 2] = 0x34;
    zero[4 + 8450 + 3] = 0x12;
    t = neutral_table();
    ASSERT_EQ(vexo::parse_ucf(span(zero), t), VEXO_OK);
    EXPECT_EQ(at(t, 1, 0).x, 0x1234 - 32767.5);
    EXPECT_EQ(at(t, 0, 1).x, -32767.5);
    // Extra bytes after the planes are ignored.
    ByteVec longer = file;
    longer.resize(longer.size() + 100, 0xEE);
    ASSERT_EQ(vexo::parse_ucf(span(longer), t), VEXO_OK);
    EXPECT_EQ(at(t, 64, 64).z, word(64, 64, 2) - 32767.5);
    expect_truncations_fail(vexo::parse_ucf, file, {16900});
    expect_independent_of_start(vexo::parse_ucf, file);
}

TEST(CorrLoadUcf, ShortFormHasNoZ) {
    const ByteVec file = ucf_file(word, false);
    ASSERT_EQ(file.size(), 16900u);
    CorrTable t = neutral_table();
    ASSERT_EQ(vexo::parse_ucf(span(file), t), VEXO_OK);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            ASSERT_EQ(at(t, r, c).x, word(r, c, 0) - 32767.5);
            ASSERT_EQ(at(t, r, c).y, word(r, c, 1) - 32767.5);
            ASSERT_EQ(at(t, r, c).z, -32767.5);
        }
    // One byte more is the long form, and far too short for it.
    ByteVec odd = file;
    odd.push_back(0);
    EXPECT_EQ(vexo::parse_ucf(span(odd), t), VEXO_ERROR_READ_FILE);
}

TEST(CorrLoadCtb, TwoPlanesYFirst) {
    const ByteVec file = ctb_file(word);
    ASSERT_EQ(file.size(), 16900u);
    CorrTable t = neutral_table();
    ASSERT_EQ(vexo::parse_ctb(span(file), t), VEXO_OK);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            ASSERT_EQ(at(t, r, c).x, word(r, c, 0) - 32767.5);
            ASSERT_EQ(at(t, r, c).y, word(r, c, 1) - 32767.5);
            ASSERT_EQ(at(t, r, c).z, -32767.5);
        }
    expect_truncations_fail(vexo::parse_ctb, file, {});
    expect_independent_of_start(vexo::parse_ctb, file);
    ByteVec y_only(file.begin(), file.begin() + 8450);
    EXPECT_EQ(vexo::parse_ctb(span(y_only), t), VEXO_ERROR_READ_FILE);
}

TEST(CorrLoadCt5, EveryFourthEntryOfTheFineGrid) {
    // fine row = entry within a line, fine column = line.
    auto fine = [](int fr, int fc, int axis) -> double {
        return 100000.0 * fc + 3.0 * fr + 1 + axis * 7;
    };
    const ByteVec file = ct5_file(fine);
    ASSERT_EQ(file.size(), 64u + 2 * 264196u);
    CorrTable t = neutral_table();
    ASSERT_EQ(vexo::parse_ct5(span(file), t), VEXO_OK);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            ASSERT_EQ(at(t, r, c).x, fine(4 * r, 4 * c, 0) * 0.0625 - 32767.5);
            ASSERT_EQ(at(t, r, c).y, fine(4 * r, 4 * c, 1) * 0.0625 - 32767.5);
            ASSERT_EQ(at(t, r, c).z, 0.0);
        }
    // Row 1, column 2 by hand: X plane (second), line 8, entry 4.
    ByteVec zero(file.size(), 0);
    const size_t offset = 64 + 264196 + 4 * (8 * 257 + 4);
    zero[offset] = 0x10; // 16 * 0.0625 = 1
    t = neutral_table();
    ASSERT_EQ(vexo::parse_ct5(span(zero), t), VEXO_OK);
    EXPECT_EQ(at(t, 1, 2).x, 1.0 - 32767.5);
    EXPECT_EQ(at(t, 2, 1).x, -32767.5);
    // A large word keeps its unsigned value.
    zero[offset + 3] = 0xFF;
    ASSERT_EQ(vexo::parse_ct5(span(zero), t), VEXO_OK);
    EXPECT_EQ(at(t, 1, 2).x, (0xFF000010u) * 0.0625 - 32767.5);
    expect_truncations_fail(vexo::parse_ct5, file, {});
    expect_independent_of_start(vexo::parse_ct5, file);
}

TEST(CorrLoadGcd, OffsetsFromA1024Grid) {
    auto offset = [](int r, int c, int axis) -> double {
        return axis == 2 ? -(r * 65 + c) % 30000 : (axis == 0 ? c - 40 : 17 - r);
    };
    const ByteVec file = gcd_file(offset);
    ASSERT_EQ(file.size(), 4225u * 6);
    CorrTable t = neutral_table();
    ASSERT_EQ(vexo::parse_gcd(span(file), t), VEXO_OK);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            ASSERT_EQ(at(t, r, c).x, c * 1024.0 + offset(r, c, 0) - 32767.5);
            ASSERT_EQ(at(t, r, c).y, r * 1024.0 + offset(r, c, 1) - 32767.5);
            ASSERT_EQ(at(t, r, c).z, offset(r, c, 2));
        }
    // The 1024 pitch, not the neutral 1023.984375: zero offsets overshoot.
    const ByteVec zeros(4225 * 6, 0);
    ASSERT_EQ(vexo::parse_gcd(span(zeros), t), VEXO_OK);
    EXPECT_EQ(at(t, 64, 64).x, 32768.5);
    EXPECT_EQ(at(t, 0, 1).x, -31743.5);
    expect_independent_of_start(vexo::parse_gcd, file);
    expect_truncations_fail(vexo::parse_gcd, file, {});
}

TEST(CorrLoadKxo, HeaderAndSignedPlanes) {
    const uint8_t header[12] = {0x00, 0x07, 0x12, 0x34, 0x99, 0xAA, 0xBB, 0xCC, 0x80, 0, 0, 1};
    auto stored = [](int r, int c, int axis) -> double {
        return (r * 65 + c) * 1000.0 - 30000.0 * (axis + 1);
    };
    const ByteVec file = kxo_file(header, stored);
    ASSERT_EQ(file.size(), 50712u);
    CorrTable t = neutral_table();
    CorrHead head{};
    ASSERT_EQ(vexo::parse_kxo(span(file), t, head), VEXO_OK);
    EXPECT_EQ(head.version, 7);
    EXPECT_EQ(head.header_size, 0x1234);
    EXPECT_EQ(head.tag, 0x99);
    EXPECT_EQ(head.reserved[0], 0xAA); // kept as read
    EXPECT_EQ(head.reserved[2], 0xCC);
    EXPECT_EQ(head.value, 0x80000001u);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c)
            for (int axis = 0; axis < 3; ++axis) {
                const double v = axis == 0 ? at(t, r, c).x : axis == 1 ? at(t, r, c).y : at(t, r, c).z;
                ASSERT_EQ(v, stored(r, c, axis) / 30000.0 - 32767.5);
            }
    EXPECT_EQ(at(t, 0, 0).x, -32768.5); // stored -30000 is signed

    // The whole i32 range, pseudo-random, against the scalar formula (the
    // loader divides two values at a time where the CPU allows).
    auto spread = [](int r, int c, int axis) -> double {
        uint32_t h = uint32_t(r * 65 + c + 4225 * axis) * 2654435761u;
        h ^= h >> 15;
        if (r == 3 && c == 7)
            return axis == 0 ? -2147483648.0 : 2147483647.0;
        return double(int32_t(h * 2246822519u));
    };
    const ByteVec wide = kxo_file(header, spread);
    ASSERT_EQ(vexo::parse_kxo(span(wide), t, head), VEXO_OK);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            ASSERT_EQ(at(t, r, c).x, spread(r, c, 0) / 30000.0 - 32767.5) << r << "," << c;
            ASSERT_EQ(at(t, r, c).y, spread(r, c, 1) / 30000.0 - 32767.5) << r << "," << c;
            ASSERT_EQ(at(t, r, c).z, spread(r, c, 2) / 30000.0 - 32767.5) << r << "," << c;
        }
    EXPECT_EQ(at(t, 3, 7).x, -2147483648.0 / 30000.0 - 32767.5);

    // A truncated file still yields its header (as far as it reaches).
    for (size_t len : {size_t{0}, size_t{3}, size_t{5}, size_t{12}, size_t{50711}}) {
        ByteVec prefix(file.begin(), file.begin() + long(len));
        CorrHead h{};
        std::memset(&h, 0x55, sizeof h);
        CorrTable before;
        std::memset(&before, 0xAB, sizeof before);
        t = before;
        ASSERT_EQ(vexo::parse_kxo(span(prefix), t, h), VEXO_ERROR_READ_FILE);
        ASSERT_EQ(std::memcmp(&t, &before, sizeof t), 0) << "no cell written";
        EXPECT_EQ(h.version, len >= 2 ? 7 : 0);
        EXPECT_EQ(h.header_size, len >= 4 ? 0x1234 : len == 3 ? 0x1200 : 0);
        EXPECT_EQ(h.tag, len >= 5 ? 0x99 : 0);
        EXPECT_EQ(h.value, len >= 12 ? 0x80000001u : 0u);
    }
}

TEST(CorrLoadCrt, FirstValueIsYSecondIsX) {
    auto value = [](int r, int c, int axis) -> double {
        return axis == 0 ? 0.1 * c - 3 : axis == 1 ? -0.25 * r : 999.0;
    };
    const ByteVec file = crt_file(value);
    ASSERT_EQ(file.size(), 2048u + 4225 * 16);
    CorrTable t = neutral_table();
    ASSERT_EQ(vexo::parse_crt(span(file), t), VEXO_OK);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            ASSERT_EQ(at(t, r, c).x, double(float(value(r, c, 0))) * 500.0);
            ASSERT_EQ(at(t, r, c).y, double(float(value(r, c, 1))) * 500.0);
            ASSERT_EQ(at(t, r, c).z, 0.0); // not touched
        }
    EXPECT_EQ(at(t, 4, 0).y, -500.0);
    expect_truncations_fail(vexo::parse_crt, file, {});
    expect_independent_of_start(vexo::parse_crt, file);
}

TEST(CorrLoadCor, ScaledPlainAndIntegerLayouts) {
    auto delta = [](int r, int c, int axis) -> double {
        return axis == 0 ? 0.5 * c - 3 : 2.0 * r - 0.25;
    };
    CorrTable t = neutral_table();
    const ByteVec scaled = cor3_file(2.0, -0.5, delta);
    ASSERT_EQ(scaled.size(), 56u + 4225 * 16);
    ASSERT_EQ(vexo::parse_cor(span(scaled), t), VEXO_OK);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            ASSERT_EQ(at(t, r, c).x, neutral(c) - delta(r, c, 0) * 2.0);
            ASSERT_EQ(at(t, r, c).y, neutral(r) - delta(r, c, 1) * -0.5);
            ASSERT_EQ(at(t, r, c).z, 0.0);
        }
    expect_truncations_fail(vexo::parse_cor, scaled, {});
    expect_independent_of_start(vexo::parse_cor, scaled);

    const ByteVec plain = cor_plain_file(delta);
    ASSERT_EQ(plain.size(), 519u + 4225 * 16);
    t = neutral_table();
    ASSERT_EQ(vexo::parse_cor(span(plain), t), VEXO_OK);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            ASSERT_EQ(at(t, r, c).x, neutral(c) - delta(r, c, 0));
            ASSERT_EQ(at(t, r, c).y, neutral(r) - delta(r, c, 1));
        }
    expect_truncations_fail(vexo::parse_cor, plain, {});
    expect_independent_of_start(vexo::parse_cor, plain);

    auto int_delta = [](int r, int c, int axis) -> double {
        return axis == 0 ? c * 3 - 100 : -(r * 5) + 7;
    };
    const ByteVec ezcad = cor21_file(0.0, int_delta);
    ASSERT_EQ(ezcad.size(), 33840u);
    t = neutral_table();
    ASSERT_EQ(vexo::parse_cor(span(ezcad), t), VEXO_OK);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            ASSERT_EQ(at(t, r, c).x, neutral(c) - int_delta(r, c, 0));
            ASSERT_EQ(at(t, r, c).y, neutral(r) - int_delta(r, c, 1));
        }
    // The trailer is not needed; the pairs are.
    ByteVec no_trailer(ezcad.begin(), ezcad.end() - 4);
    EXPECT_EQ(vexo::parse_cor(span(no_trailer), t), VEXO_OK);
    expect_truncations_fail(vexo::parse_cor, no_trailer, {});
    expect_independent_of_start(vexo::parse_cor, ezcad);
}

TEST(CorrLoadFcr, FineLinesFoldOntoNodes) {
    // Deltas chosen so every (fine row, fine column) is recognisable.
    auto fine = [](int fr, int fc, int axis) -> double {
        return axis == 0 ? (fr * 3 + fc) % 200 - 100 : (fc * 5 - fr) % 150;
    };
    const ByteVec file = fcr_file(777, fine);
    ASSERT_EQ(file.size(), 777u + 65536u);
    CorrTable t = neutral_table();
    for (GeomPoint &p : t.cell)
        p.z = 5.0; // every node receives a delta, so every z becomes 0
    ASSERT_EQ(vexo::parse_fcr(span(file), t), VEXO_OK);

    // Independent fold: node n collects lines 2n-1 and 2n that exist.
    auto lines_of = [](int node) {
        std::vector<int> lines;
        for (int l : {2 * node - 1, 2 * node})
            if (l >= 0 && l < 128)
                lines.push_back(l);
        return lines;
    };
    EXPECT_EQ(lines_of(0), (std::vector<int>{0}));
    EXPECT_EQ(lines_of(32), (std::vector<int>{63, 64}));
    EXPECT_EQ(lines_of(64), (std::vector<int>{127}));
    double sum_x = 0, sum_table_x = 0;
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            double dx = 0, dy = 0;
            for (int fr : lines_of(r))
                for (int fc : lines_of(c)) {
                    dx += fine(fr, fc, 0);
                    dy += fine(fr, fc, 1);
                }
            ASSERT_EQ(at(t, r, c).x, neutral(c) + dx) << r << "," << c;
            ASSERT_EQ(at(t, r, c).y, neutral(r) + dy) << r << "," << c;
            ASSERT_EQ(at(t, r, c).z, 0.0);
            sum_table_x += at(t, r, c).x - neutral(c);
        }
    // Cross-check: every fine delta lands somewhere exactly once.
    for (int fr = 0; fr < 128; ++fr)
        for (int fc = 0; fc < 128; ++fc)
            sum_x += fine(fr, fc, 0);
    EXPECT_EQ(sum_table_x, sum_x);

    // Only the last 65,536 bytes count; a bare block works too.
    const ByteVec bare(file.end() - 65536, file.end());
    CorrTable u = neutral_table();
    ASSERT_EQ(vexo::parse_fcr(span(bare), u), VEXO_OK);
    for (int k = 0; k < 4225; ++k)
        ASSERT_EQ(u.cell[k].x, t.cell[k].x);
    expect_truncations_fail(vexo::parse_fcr, bare, {});
    expect_independent_of_start(vexo::parse_fcr, file);
}

TEST(CorrLoadBinary, EmptyInputFailsEveryParser) {
    const uint8_t nothing = 0;
    const vexo::ByteSpan empty{&nothing, 0};
    CorrTable t = neutral_table();
    CorrHead head{};
    for (Parser p : {vexo::parse_ucf, vexo::parse_ctb, vexo::parse_ct5, vexo::parse_gcd,
                     vexo::parse_crt, vexo::parse_cor, vexo::parse_fcr})
        EXPECT_EQ(p(empty, t), VEXO_ERROR_READ_FILE);
    EXPECT_EQ(vexo::parse_kxo(empty, t, head), VEXO_ERROR_READ_FILE);
    for (int k = 0; k < 4225; ++k)
        ASSERT_EQ(t.cell[k].x, neutral(k % 65)) << "an empty file changes nothing";
}
