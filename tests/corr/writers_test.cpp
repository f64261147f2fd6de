// The three writers: byte layout, rounding, saturation, and save -> load.
#include <functional>

#include "core/byteorder.hpp"
#include "corr/rounding.hpp"
#include "corr/writers.hpp"
#include "fixtures.hpp"

using namespace vexo_test;

TEST(CorrSaveKxo, NeutralTableBytesRoundingAndSaturation) {
    CorrTable t = neutral_table();
    CorrHead head{9, 99, 0xA7, {0xFF, 0xFF, 0xFF}, 0x01020304}; // version, size, reserved ignored
    const std::string path = scratch_path("neutral.kxo");
    ASSERT_EQ(vexo_corr_save_kxo(&t, path.c_str(), &head), VEXO_OK);
    ByteVec file = read_file(path);
    auto entry = [&](int plane, int k) {
        return vexo::load_be_i32(&file[12 + 16900 * plane + 4 * k]);
    };
    ASSERT_EQ(file.size(), 50712u);
    const ByteVec header = {0, 1, 0, 12, 0xA7, 0, 0, 0, 1, 2, 3, 4};
    EXPECT_EQ(ByteVec(file.begin(), file.begin() + 12), header);
    EXPECT_EQ(entry(0, 0), 0);
    EXPECT_EQ(entry(0, 64 * 65), 1966050000); // column 64, row 0
    EXPECT_EQ(entry(1, 64), 1966050000);      // row 64, column 0
    EXPECT_EQ(entry(1, 1), 30719531);         // row 1: 1023.984375 * 30000
    for (int k = 0; k < 4225; ++k)
        ASSERT_EQ(entry(2, k), 983025000) << k;
    // Half away from zero after clamping to the target range; NaN gives 0.
    const std::pair<double, int32_t> to_i32[] = {
        {-0.5, -1},         {0.5, 1},  {-0.4, 0}, {2.5, 3}, {-2.5, -3}, {1e300, INT32_MAX},
        {-1e300, INT32_MIN}, {NAN, 0}, {2147483647.4, INT32_MAX}, {INFINITY, INT32_MAX}};
    for (const auto &[value, stored] : to_i32)
        EXPECT_EQ(vexo::round_to_i32(value), stored) << value;
    const std::pair<double, int> to_u16[] = {{-3, 0}, {65535.49, 65535}, {7e4, 65535}, {.5, 1}};
    for (const auto &[value, stored] : to_u16)
        EXPECT_EQ(vexo::round_to_u16(value), stored) << value;
    at(t, 0, 0).x = 1e9;
    at(t, 1, 0).y = -1e9;
    at(t, 0, 1).z = NAN;
    vexo::encode_kxo(t, head, file.data());
    EXPECT_TRUE(entry(0, 0) == INT32_MAX && entry(1, 1) == INT32_MIN && entry(2, 65) == 0);
}

TEST(CorrSaveCtbCor, LayoutAndRounding) {
    CorrTable t = neutral_table();
    at(t, 1, 0).x = -32667.0; // ctb word 100.5 -> 101 (entry 1 = row 1, column 0)
    at(t, 0, 1).x = 40000.0;  // clamps to 65535 (entry 65 = row 0, column 1)
    at(t, 0, 0).x -= 3.5;     // cor delta +3.5 -> 4
    at(t, 0, 0).y += 2.5;     // -2.5 -> -3
    const std::string ctb = scratch_path("layout.ctb"), cor = scratch_path("layout.cor");
    ASSERT_EQ(vexo_corr_save_ctb(&t, ctb.c_str()), VEXO_OK);
    ASSERT_EQ(vexo_corr_save_cor(&t, cor.c_str(), 1234.5), VEXO_OK);
    const ByteVec w = read_file(ctb), d = read_file(cor);
    ASSERT_TRUE(w.size() == 16900 && d.size() == 33840);
    auto x_word = [&](int k) { return vexo::load_le16(&w[8450 + 2 * k]); }; // after the Y plane
    EXPECT_TRUE(x_word(1) == 101 && x_word(65) == 65535 && x_word(32 * 65 + 32) == 32768);
    EXPECT_EQ(std::string(d.begin(), d.begin() + 28), "JCZ_COR_2_1" + std::string(17, '\0'));
    EXPECT_EQ(vexo::load_le_f64(&d[28]), 1234.5);
    EXPECT_TRUE(vexo::load_le_i32(&d[36]) == 4 && vexo::load_le_i32(&d[40]) == -3);
    EXPECT_EQ(vexo::load_le_i32(&d[36 + 65 * 8]), -101); // row 1, column 0
    EXPECT_EQ(ByteVec(d.end() - 4, d.end()), ByteVec(4, 0));
}

TEST(CorrWriters, EveryLayoutLoadsBackCloseWithTheHeaderOnlyFromKxo) {
    CorrTable original = neutral_table();
    for (int k = 0; k < 4225; ++k) { // a smooth distortion inside the output range
        original.cell[k].x = 0.99 * original.cell[k].x + 250 * std::sin(0.1 * k) + 1e-7 * k;
        original.cell[k].y = 0.99 * original.cell[k].y - 180 * std::cos(0.07 * k);
        original.cell[k].z = 40 * std::sin(0.2 * k) - 0.3;
    }
    const CorrHead head{9, 99, 0x5C, {1, 2, 3}, 0xDEADBEEF};
    const std::string kxo = scratch_path("back.kxo"), ctb = scratch_path("back.ctb"),
                      cor = scratch_path("back.cor");
    ASSERT_EQ(vexo_corr_save_kxo(&original, kxo.c_str(), &head), VEXO_OK);
    ASSERT_EQ(vexo_corr_save_ctb(&original, ctb.c_str()), VEXO_OK);
    ASSERT_EQ(vexo_corr_save_cor(&original, cor.c_str(), 7.0), VEXO_OK);
    // kxo: half a step, plus the decoder's last bits for exact halves.
    const struct { const std::string &path; double tolerance, z; } cases[] = { // z NaN: as saved
        {kxo, 1.0 / 60000 + 1e-9, NAN}, {ctb, 0.5, -32767.5}, {cor, 0.5, 0.0}};
    for (const auto &c : cases) {
        CorrTable back;
        CorrHead got;
        ASSERT_EQ(vexo_corr_load_corr65(&back, c.path.c_str(), 0), VEXO_OK);
        for (int k = 0; k < 4225; ++k) {
            ASSERT_NEAR(back.cell[k].x, original.cell[k].x, c.tolerance) << c.path << " " << k;
            ASSERT_NEAR(back.cell[k].y, original.cell[k].y, c.tolerance) << c.path << " " << k;
            ASSERT_NEAR(back.cell[k].z, std::isnan(c.z) ? original.cell[k].z : c.z, c.tolerance);
        }
        ASSERT_EQ(vexo_corr_get_corr_head(&got), VEXO_OK);
        const CorrHead want = &c.path == &kxo ? CorrHead{1, 12, 0x5C, {}, 0xDEADBEEF} : CorrHead{};
        EXPECT_EQ(std::memcmp(&got, &want, sizeof got), 0) << c.path;
    }
}

TEST(CorrWriters, BadArgumentsAndFileErrors) {
    const CorrTable t = neutral_table();
    const CorrHead head{};
    const std::function<uint32_t(const CorrTable *, const char *)> savers[] = {
        [&](const CorrTable *table, const char *p) { return vexo_corr_save_kxo(table, p, &head); },
        [](const CorrTable *table, const char *p) { return vexo_corr_save_ctb(table, p); },
        [](const CorrTable *table, const char *p) { return vexo_corr_save_cor(table, p, 1.0); }};
    const std::string missing_dir = scratch_path("no/such/folder/x");
    const bool has_full = std::ifstream("/dev/full").good(); // opens, then has no room
    for (const auto &save : savers) {
        EXPECT_EQ(save(nullptr, "x"), VEXO_ERROR_INVALID_PARAMETER);
        EXPECT_EQ(save(&t, nullptr), VEXO_ERROR_INVALID_PARAMETER);
        EXPECT_EQ(save(&t, missing_dir.c_str()), VEXO_ERROR_OPEN_FILE);
        EXPECT_TRUE(!has_full || save(&t, "/dev/full") == VEXO_ERROR_WRITE_FILE);
    }
    EXPECT_EQ(vexo_corr_save_kxo(&t, "x.kxo", nullptr), VEXO_ERROR_INVALID_PARAMETER);
}
