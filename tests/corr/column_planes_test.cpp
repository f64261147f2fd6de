// SPDX-License-Identifier: MIT
// Both decoders of column-stored planes against the literal per-value
// formulas: kxo over a sample of the whole i32 range (its extremes, the
// multiples of 30000 and their neighbours, hashed values), ucf/ctb over
// every one of the 65,536 words in every plane.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <vector>

#include "corr/column_planes.hpp"

namespace {

constexpr size_t kCells = 4225;

using Decoder = void (*)(const uint8_t *, CorrTable &);
using WordDecoder = void (*)(const uint8_t *, const uint8_t *, const uint8_t *, CorrTable &);

// Value number i of a sample that starts with the awkward ones.
int32_t sampled_i32(uint32_t i) {
    static const int32_t awkward[] = {
        INT32_MIN, INT32_MIN + 1, -30001, -30000, -29999,        -1,       0,
        1,         29999,         30000,  30001,  INT32_MAX - 1, INT32_MAX};
    constexpr uint32_t kAwkward = sizeof awkward / sizeof awkward[0];
    if (i < kAwkward) return awkward[i];
    const uint32_t h = (i * 2654435761u) ^ (i >> 7) * 2246822519u;
    if (i % 4 == 0) return int32_t(int64_t(h % 143166u) * 30000 - 2147460000); // on multiples
    if (i % 4 == 1) return int32_t(int64_t(h % 143166u) * 30000 - 2147460000 + 1);
    return int32_t(h);
}

std::vector<uint8_t> kxo_planes(uint32_t first) {
    std::vector<uint8_t> planes(3 * 4 * kCells);
    for (uint32_t k = 0; k < 3 * kCells; ++k) {
        const auto v = uint32_t(sampled_i32(first + k));
        for (int b = 0; b < 4; ++b) planes[4 * k + b] = uint8_t(v >> (24 - 8 * b));
    }
    return planes;
}

// Flags and reserved words a decoder must not touch, and coordinates it must replace.
CorrTable filled_table() {
    CorrTable t;
    std::memset(&t, 0x5C, sizeof t);
    return t;
}

// Index of the first cell whose (x, y, z) differ from value(plane, k) in any bit, or -1.
template <class Value> long first_wrong_cell(const CorrTable &t, Value value) {
    for (int row = 0; row < 65; ++row)
        for (int column = 0; column < 65; ++column) {
            const GeomPoint &cell = t.cell[row * 65 + column];
            const size_t k = size_t(column) * 65 + size_t(row);
            const double want[3] = {value(0, k), value(1, k), value(2, k)};
            if (std::memcmp(&cell.x, want, sizeof want) != 0 || cell.flags != 0x5C5C5C5Cu)
                return row * 65 + column;
        }
    return -1;
}

void check_kxo(Decoder decode) {
    for (uint32_t first = 0; first < 60 * 3 * kCells; first += 3 * kCells) {
        const std::vector<uint8_t> planes = kxo_planes(first);
        CorrTable t = filled_table();
        decode(planes.data(), t);
        const long wrong = first_wrong_cell(t, [&](int plane, size_t k) {
            return sampled_i32(first + uint32_t(plane * kCells + k)) / 30000.0 - 32767.5;
        });
        ASSERT_EQ(wrong, -1) << "sample from " << first;
    }
}

// Word w of file f, plane p, cell k: the files together hold every word in every plane.
uint16_t word(uint32_t f, int p, size_t k) {
    return uint16_t(f * kCells + k + uint32_t(p) * 12345u);
}

void check_words(WordDecoder decode, bool with_z) {
    for (uint32_t f = 0; f * kCells < 65536; ++f) {
        std::vector<uint8_t> planes(3 * 2 * kCells); // y, x, z
        for (int p = 0; p < 3; ++p)
            for (size_t k = 0; k < kCells; ++k) {
                const uint16_t w = word(f, p, k);
                planes[2 * (p * kCells + k)] = uint8_t(w);
                planes[2 * (p * kCells + k) + 1] = uint8_t(w >> 8);
            }
        CorrTable t = filled_table();
        const uint8_t *y = planes.data(), *x = y + 2 * kCells, *z = x + 2 * kCells;
        decode(y, x, with_z ? z : nullptr, t);
        const long wrong = first_wrong_cell(t, [&](int axis, size_t k) {
            if (axis == 2 && !with_z) return 0 - 32767.5;
            return word(f, axis == 0 ? 1 : axis == 1 ? 0 : 2, k) - 32767.5;
        });
        ASSERT_EQ(wrong, -1) << "file " << f << (with_z ? " with z" : " without z");
    }
}

class WidePlanes : public testing::Test {
protected:
    void SetUp() override {
        if (!vexo::wide_cells_available()) GTEST_SKIP() << "processor lacks 512-bit registers";
    }
};

TEST(PortablePlanes, KxoMatchesTheFormulaOverSampledI32) {
    check_kxo(vexo::decode_kxo_planes_portable);
}

TEST_F(WidePlanes, KxoMatchesTheFormulaOverSampledI32) {
    check_kxo(vexo::decode_kxo_planes_wide);
}

TEST(PortablePlanes, WordsMatchTheFormulaForEveryWord) {
    check_words(vexo::decode_word_planes_portable, true);
}

TEST_F(WidePlanes, WordsMatchTheFormulaForEveryWord) {
    check_words(vexo::decode_word_planes_wide, true);
}

TEST_F(WidePlanes, MissingZPlaneReadsAsWordZero) {
    check_words(vexo::decode_word_planes_wide, false);
}

} // namespace
