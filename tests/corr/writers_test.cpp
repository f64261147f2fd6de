#include <cmath>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include "core/byteorder.hpp"
#include "corr/loaders.hpp"
#include "corr/rounding.hpp"
#include "corr/writers.hpp"
#include "fixtures.hpp"
#include "vexo.h"

using namespace vexo_test;

namespace {

CorrTable neutral_table() {
    CorrTable t;
    vexo_corr_set_neutral(&t);
    return t;
}

int32_t stored(const ByteVec &file, int plane, int k) {
    return vexo::load_be_i32(file.data() + 12 + plane * 16900 + 4 * k);
}

CorrTable load(const std::string &path, uint32_t format, uint32_t *status) {
    CorrTable t;
    *status = vexo_corr_load_corr65(&t, path.c_str(), format);
    return t;
}

} // namespace

TEST(CorrSaveKxo, NeutralTableBytes) {
    CorrTable t = neutral_table();
    CorrHead head{};
    head.version = 9;      // ignored: the writer stores 1
    head.header_size = 99; // ignored: the writer stores 12
    head.tag = 0xA7;
    std::memset(head.reserved, 0xFF, 3); // always written as 0
    head.value = 0x01020304;
    const std::string path = scratch_path("neutral.kxo");
    ASSERT_EQ(vexo_corr_save_kxo(&t, path.c_str(), &head), VEXO_OK);
    const ByteVec file = read_file(path);
    ASSERT_EQ(file.size(), 50712u);

    const uint8_t expected_head[12] = {0, 1, 0, 12, 0xA7, 0, 0, 0, 1, 2, 3, 4};
    EXPECT_EQ(std::memcmp(file.data(), expected_head, 12), 0);
    EXPECT_EQ(stored(file, 0, 0), 0);
    EXPECT_EQ(stored(file, 0, 64 * 65), 1966050000); // column 64, row 0
    EXPECT_EQ(stored(file, 1, 64), 1966050000);      // row 64, column 0
    EXPECT_EQ(stored(file, 1, 64 * 65), 0);
    for (int k = 0; k < 4225; ++k)
        ASSERT_EQ(stored(file, 2, k), 983025000) << k;
    // Column-major: entry 1 is row 1 of column 0, whose x is neutral column 0.
    EXPECT_EQ(stored(file, 0, 1), 0);
    EXPECT_EQ(stored(file, 1, 1), int32_t(std::llround(1023.984375 * 30000)));
}

TEST(CorrSaveKxo, RoundingAndSaturation) {
    // Half away from zero, after clamping to the i32 range.
    EXPECT_EQ(vexo::round_to_i32(-0.5), -1);
    EXPECT_EQ(vexo::round_to_i32(0.5), 1);
    EXPECT_EQ(vexo::round_to_i32(-0.4), 0);
    EXPECT_EQ(vexo::round_to_i32(2.5), 3);
    EXPECT_EQ(vexo::round_to_i32(-2.5), -3);
    EXPECT_EQ(vexo::round_to_i32(1e300), 2147483647);
    EXPECT_EQ(vexo::round_to_i32(-1e300), -2147483647 - 1);
    EXPECT_EQ(vexo::round_to_i32(2147483647.4), 2147483647);
    EXPECT_EQ(vexo::round_to_i32(std::numeric_limits<double>::infinity()), 2147483647);
    EXPECT_EQ(vexo::round_to_i32(std::nan("")), 0);
    EXPECT_EQ(vexo::round_to_u16(-3.0), 0);
    EXPECT_EQ(vexo::round_to_u16(65535.49), 65535);
    EXPECT_EQ(vexo::round_to_u16(70000.0), 65535);
    EXPECT_EQ(vexo::round_to_u16(100.5), 101);

    // The same through a whole file.
    CorrTable t = neutral_table();
    t.cell[0].x = 1e9;  // row 0, column 0 -> entry 0
    t.cell[65].y = -1e9; // row 1, column 0 -> entry 1
    t.cell[1].z = std::nan(""); // row 0, column 1 -> entry 65
    ByteVec file(vexo::kKxoFileSize);
    vexo::encode_kxo(t, CorrHead{}, file.data());
    EXPECT_EQ(stored(file, 0, 0), 2147483647);
    EXPECT_EQ(stored(file, 1, 1), -2147483647 - 1);
    EXPECT_EQ(stored(file, 2, 65), 0);
}

TEST(CorrSaveKxo, RoundTripWithinHalfAStep) {
    const CorrTable tables[2] = {neutral_table(), distorted_table()};
    for (const CorrTable &original : tables) {
        CorrHead head{};
        head.tag = 0x5C;
        head.value = 0xDEADBEEF;
        const std::string path = scratch_path("roundtrip.kxo");
        ASSERT_EQ(vexo_corr_save_kxo(&original, path.c_str(), &head), VEXO_OK);
        uint32_t status;
        CorrTable back = load(path, VEXO_CORR_FORMAT_AUTO, &status);
        ASSERT_EQ(status, VEXO_OK);
        // Half a step, plus the last bits of the decoder's own arithmetic
        // for values that sit exactly halfway (7929.95625 does).
        const double tolerance = 1.0 / 60000 + 1e-9;
        for (int k = 0; k < 4225; ++k) {
            ASSERT_NEAR(back.cell[k].x, original.cell[k].x, tolerance) << k;
            ASSERT_NEAR(back.cell[k].y, original.cell[k].y, tolerance) << k;
            ASSERT_NEAR(back.cell[k].z, original.cell[k].z, tolerance) << k;
        }
        CorrHead got;
        ASSERT_EQ(vexo_corr_get_corr_head(&got), VEXO_OK);
        EXPECT_EQ(got.version, 1);
        EXPECT_EQ(got.header_size, 12);
        EXPECT_EQ(got.tag, 0x5C);
        EXPECT_EQ(got.value, 0xDEADBEEFu);
        EXPECT_EQ(got.reserved[0] | got.reserved[1] | got.reserved[2], 0);
    }
}

TEST(CorrSaveKxo, FileErrors) {
    CorrTable t = neutral_table();
    CorrHead head{};
    const std::string missing_dir = scratch_path("no/such/folder/x.kxo");
    EXPECT_EQ(vexo_corr_save_kxo(&t, missing_dir.c_str(), &head), VEXO_ERROR_OPEN_FILE);
    EXPECT_EQ(vexo_corr_save_kxo(static_cast<const CorrTable *>(nullptr), "x.kxo", &head), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_save_kxo(&t, nullptr, &head), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_save_kxo(&t, "x.kxo", nullptr), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_save_ctb(static_cast<const CorrTable *>(nullptr), "x.ctb"), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_save_ctb(&t, nullptr), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_save_cor(static_cast<const CorrTable *>(nullptr), "x.cor", 1.0), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_save_cor(&t, nullptr, 1.0), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_save_ctb(&t, missing_dir.c_str()), VEXO_ERROR_OPEN_FILE);
    EXPECT_EQ(vexo_corr_save_cor(&t, missing_dir.c_str(), 0.0), VEXO_ERROR_OPEN_FILE);
    // A device that accepts the open but has no room: the loss shows on close.
    if (std::FILE *probe = std::fopen("/dev/full", "wb")) {
        std::fclose(probe);
        EXPECT_EQ(vexo_corr_save_kxo(&t, "/dev/full", &head), VEXO_ERROR_WRITE_FILE);
        EXPECT_EQ(vexo_corr_save_ctb(&t, "/dev/full"), VEXO_ERROR_WRITE_FILE);
        EXPECT_EQ(vexo_corr_save_cor(&t, "/dev/full", 0.0), VEXO_ERROR_WRITE_FILE);
    }
}

TEST(CorrSaveCtb, LayoutRoundingAndRoundTrip) {
    CorrTable t = neutral_table();
    t.cell[65].x = -32667.0;       // row 1, col 0: 100.5 -> 101
    t.cell[65].y = -32667.6;       // 99.9 -> 100
    t.cell[1].x = 40000.0;         // row 0, col 1: clamps to 65535
    t.cell[1].y = -40000.0;        // clamps to 0
    const std::string path = scratch_path("table.ctb");
    ASSERT_EQ(vexo_corr_save_ctb(&t, path.c_str()), VEXO_OK);
    const ByteVec file = read_file(path);
    ASSERT_EQ(file.size(), 16900u);
    auto y_word = [&](int k) { return vexo::load_le16(file.data() + 2 * k); };
    auto x_word = [&](int k) { return vexo::load_le16(file.data() + 8450 + 2 * k); };
    EXPECT_EQ(x_word(1), 101);  // entry 1 = row 1, column 0
    EXPECT_EQ(y_word(1), 100);
    EXPECT_EQ(x_word(65), 65535); // entry 65 = row 0, column 1
    EXPECT_EQ(y_word(65), 0);
    EXPECT_EQ(x_word(64 * 65), 65535); // column 64: 65535 exactly
    EXPECT_EQ(y_word(64), 65535);
    EXPECT_EQ(x_word(32 * 65 + 32), 32768); // 32767.5 rounds away from zero

    uint32_t status;
    CorrTable back = load(path, VEXO_CORR_FORMAT_AUTO, &status);
    ASSERT_EQ(status, VEXO_OK);
    EXPECT_EQ(back.cell[65].x, 101 - 32767.5);
    EXPECT_EQ(back.cell[1].x, 32767.5);
    EXPECT_EQ(back.cell[1].y, -32767.5);

    const CorrTable distorted = distorted_table();
    ASSERT_EQ(vexo_corr_save_ctb(&distorted, path.c_str()), VEXO_OK);
    back = load(path, VEXO_CORR_FORMAT_CTB, &status);
    ASSERT_EQ(status, VEXO_OK);
    for (int k = 0; k < 4225; ++k) {
        ASSERT_NEAR(back.cell[k].x, distorted.cell[k].x, 0.5);
        ASSERT_NEAR(back.cell[k].y, distorted.cell[k].y, 0.5);
        ASSERT_EQ(back.cell[k].z, -32767.5); // the format has no Z
    }
}

TEST(CorrSaveCor, LayoutAndRoundTrip) {
    CorrTable t = neutral_table();
    t.cell[0].x -= 3.5;    // delta +3.5 -> 4
    t.cell[0].y += 2.5;    // delta -2.5 -> -3
    t.cell[66].x = -1e12;  // delta saturates at i32 max
    t.cell[66].y = 1e12;   // delta saturates at i32 min
    const std::string path = scratch_path("table.cor");
    ASSERT_EQ(vexo_corr_save_cor(&t, path.c_str(), 1234.5), VEXO_OK);
    const ByteVec file = read_file(path);
    ASSERT_EQ(file.size(), 33840u);
    EXPECT_EQ(std::memcmp(file.data(), "JCZ_COR_2_1", 11), 0);
    for (size_t i = 11; i < 28; ++i)
        ASSERT_EQ(file[i], 0) << "label padding at " << i;
    EXPECT_EQ(vexo::load_le_f64(file.data() + 28), 1234.5);
    EXPECT_EQ(vexo::load_le_i32(file.data() + 36), 4);
    EXPECT_EQ(vexo::load_le_i32(file.data() + 40), -3);
    EXPECT_EQ(vexo::load_le_i32(file.data() + 36 + 66 * 8), 2147483647);
    EXPECT_EQ(vexo::load_le_i32(file.data() + 36 + 66 * 8 + 4), -2147483647 - 1);
    EXPECT_EQ(vexo::load_le_i32(file.data() + 36 + 8), 0); // neutral cell
    for (size_t i = 33836; i < 33840; ++i)
        ASSERT_EQ(file[i], 0) << "trailer at " << i;

    // Integer deltas come back exactly; the scale is not applied.
    CorrTable shifted = neutral_table();
    for (int k = 0; k < 4225; ++k) {
        shifted.cell[k].x += (k % 37) - 18;
        shifted.cell[k].y -= (k % 23) * 3;
    }
    ASSERT_EQ(vexo_corr_save_cor(&shifted, path.c_str(), 7.0), VEXO_OK);
    uint32_t status;
    CorrTable back = load(path, VEXO_CORR_FORMAT_AUTO, &status);
    ASSERT_EQ(status, VEXO_OK);
    for (int k = 0; k < 4225; ++k) {
        ASSERT_EQ(back.cell[k].x, shifted.cell[k].x) << k;
        ASSERT_EQ(back.cell[k].y, shifted.cell[k].y) << k;
        ASSERT_EQ(back.cell[k].z, 0.0);
    }
}

TEST(CorrWriters, SameTableInThreeLayoutsLoadsAlike) {
    const CorrTable original = distorted_table();
    const std::string kxo = scratch_path("same.kxo"), ctb = scratch_path("same.ctb"),
                      cor = scratch_path("same.cor");
    CorrHead head{};
    ASSERT_EQ(vexo_corr_save_kxo(&original, kxo.c_str(), &head), VEXO_OK);
    ASSERT_EQ(vexo_corr_save_ctb(&original, ctb.c_str()), VEXO_OK);
    ASSERT_EQ(vexo_corr_save_cor(&original, cor.c_str(), 0.0), VEXO_OK);
    uint32_t s1, s2, s3;
    const CorrTable a = load(kxo, 0, &s1), b = load(ctb, 0, &s2), c = load(cor, 0, &s3);
    ASSERT_EQ(s1 + s2 + s3, 3 * VEXO_OK);
    for (int k = 0; k < 4225; ++k) {
        ASSERT_NEAR(a.cell[k].x, b.cell[k].x, 0.5 + 1.0 / 60000);
        ASSERT_NEAR(a.cell[k].x, c.cell[k].x, 0.5 + 1.0 / 60000);
        ASSERT_NEAR(a.cell[k].y, b.cell[k].y, 0.5 + 1.0 / 60000);
        ASSERT_NEAR(a.cell[k].y, c.cell[k].y, 0.5 + 1.0 / 60000);
    }
}
