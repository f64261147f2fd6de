// SPDX-License-Identifier: MIT
// The three writers: header, rounding, saturation, save -> load and file
// errors. Their layouts are checked against the loaders' test files.
#include "core/byteorder.hpp"
#include "corr/rounding.hpp"
#include "corr/writers.hpp"
#include "fixtures.hpp"

using namespace vexo_test;

TEST(CorrWriters, HeaderRoundingAndSaturation) {
    // Half away from zero after clamping to the target range; NaN gives 0. Halves
    // of either sign, NaN and finite saturation are pinned through the writers below.
    const std::pair<double, int32_t> to_i32[] = {
        {-0.4, 0}, {2147483647.4, INT32_MAX}, {INFINITY, INT32_MAX}, {-INFINITY, INT32_MIN}};
    for (const auto &[value, stored] : to_i32)
        EXPECT_EQ(vexo::round_to_i32(value), stored) << value;
    EXPECT_EQ(vexo::round_to_u16(65535.49), 65535);
    // The same through each writer.
    CorrTable t = neutral_table();
    at(t, 0, 0).x = 1e9;      // kxo: saturates; ctb: 65535
    at(t, 1, 0).y = -1e9;     // kxo: saturates; ctb: 0
    at(t, 0, 1).z = NAN;      // kxo: 0
    at(t, 1, 0).x = -32667.0; // ctb word 100.5 -> 101, cor delta -100.5 -> -101
    at(t, 2, 2).x -= 3.5;     // cor delta +3.5 -> 4
    at(t, 2, 2).y += 2.5;     // -2.5 -> -3
    const CorrHead head{9, 99, 0xA7, {0xFF, 0xFF, 0xFF}, 0x01020304}; // only tag, value kept
    ByteVec kxo(vexo::kKxoFileSize, 0xEE), ctb(16900, 0xEE), cor(33840, 0xEE);
    vexo::encode_kxo(t, head, kxo.data());
    vexo::encode_ctb(t, ctb.data());
    vexo::encode_cor21(t, 1, cor.data());
    auto kxo_at = [&](int a, int k) { return vexo::load_be_i32(&kxo[12 + 16900 * a + 4 * k]); };
    auto cor_at = [&](int k, int axis) { return vexo::load_le_i32(&cor[36 + 8 * k + 4 * axis]); };
    EXPECT_EQ(ByteVec(&kxo[0], &kxo[12]), ByteVec({0, 1, 0, 12, 0xA7, 0, 0, 0, 1, 2, 3, 4}));
    EXPECT_EQ(kxo_at(0, 0), INT32_MAX);
    EXPECT_EQ(kxo_at(1, 1), INT32_MIN);
    EXPECT_EQ(kxo_at(2, 65), 0);
    // ctb entry k: row k mod 65, column k div 65, Y plane first.
    EXPECT_EQ(vexo::load_le16(&ctb[8450]), 65535);
    EXPECT_EQ(vexo::load_le16(&ctb[2]), 0);
    EXPECT_EQ(vexo::load_le16(&ctb[8450 + 2]), 101);
    EXPECT_EQ(cor_at(65, 0), -101);
    EXPECT_EQ(cor_at(132, 0), 4);
    EXPECT_EQ(cor_at(132, 1), -3);
    EXPECT_EQ(ByteVec(cor.end() - 4, cor.end()), ByteVec(4, 0));
}

TEST(CorrWriters, EveryLayoutLoadsBackCloseAndFileErrors) {
    CorrTable original = neutral_table();
    for (int k = 0; k < 4225; ++k) { // a smooth distortion inside the output range
        original.cell[k].x = 0.99 * original.cell[k].x + 250 * std::sin(0.1 * k) + 1e-7 * k;
        original.cell[k].y = 0.99 * original.cell[k].y - 180 * std::cos(0.07 * k);
        original.cell[k].z = 40 * std::sin(0.2 * k) - 0.3;
    }
    const CorrHead head{9, 99, 0x5C, {1, 2, 3}, 0xDEADBEEF};
    auto save = [&](int format, const std::string &path) { // kxo, ctb, cor as below
        const char *p = path.c_str();
        return format == 0   ? vexo_corr_save_kxo(&original, p, &head)
               : format == 1 ? vexo_corr_save_ctb(&original, p)
                             : vexo_corr_save_cor(&original, p, 7.0);
    };
    // kxo: half a step, plus the decoder's last bits for exact halves.
    const struct {
        const char *name;
        size_t size;
        double tolerance, z;
    } cases[] = {// z NaN: kept
                 {"back.kxo", 50712, 1.0 / 60000 + 1e-9, NAN},
                 {"back.ctb", 16900, 0.5, -32767.5},
                 {"back.cor", 33840, 0.5, 0.0}};
    for (int format = 0; format < 3; ++format) {
        const auto &c = cases[format];
        const std::string path = scratch_path(c.name);
        CorrTable back;
        ASSERT_EQ(save(format, path), VEXO_OK);
        EXPECT_EQ(std::filesystem::file_size(path), c.size);
        ASSERT_EQ(vexo_corr_load_corr65(&back, path.c_str(), 0), VEXO_OK);
        for (int k = 0; k < 4225; ++k) {
            ASSERT_NEAR(back.cell[k].x, original.cell[k].x, c.tolerance) << c.name << " " << k;
            ASSERT_NEAR(back.cell[k].y, original.cell[k].y, c.tolerance) << c.name << " " << k;
            ASSERT_NEAR(back.cell[k].z, std::isnan(c.z) ? original.cell[k].z : c.z, c.tolerance);
        }
        CorrHead got, want = format ? CorrHead{} : CorrHead{1, 12, 0x5C, {}, 0xDEADBEEF};
        EXPECT_EQ(vexo_corr_get_corr_head(&got), VEXO_OK) << c.name;
        EXPECT_TRUE(same_bytes(got, want)) << c.name;
        EXPECT_EQ(save(format, scratch_path("no/such/folder/") + c.name), VEXO_ERROR_OPEN_FILE);
    }
}
