// The three writers: byte layout, rounding, saturation, and save -> load.
#include <functional>

#include "core/byteorder.hpp"
#include "corr/rounding.hpp"
#include "corr/writers.hpp"
#include "fixtures.hpp"

using namespace vexo_test;

namespace {

int32_t kxo_entry(const ByteVec &file, int plane, int k) {
    return vexo::load_be_i32(file.data() + 12 + plane * 16900 + 4 * k);
}

} // namespace

TEST(CorrSaveKxo, NeutralTableBytesRoundingAndSaturation) {
    CorrTable t = neutral_table();
    CorrHead head{9, 99, 0xA7, {0xFF, 0xFF, 0xFF}, 0x01020304}; // version, size, reserved ignored
    const std::string path = scratch_path("neutral.kxo");
    ASSERT_EQ(vexo_corr_save_kxo(&t, path.c_str(), &head), VEXO_OK);
    const ByteVec file = read_file(path);
    ASSERT_EQ(file.size(), 50712u);
    const uint8_t expected_head[12] = {0, 1, 0, 12, 0xA7, 0, 0, 0, 1, 2, 3, 4};
    EXPECT_EQ(std::memcmp(file.data(), expected_head, 12), 0);
    EXPECT_EQ(kxo_entry(file, 0, 0), 0);
    EXPECT_EQ(kxo_entry(file, 0, 64 * 65), 1966050000); // column 64, row 0
    EXPECT_EQ(kxo_entry(file, 1, 64), 1966050000);      // row 64, column 0
    EXPECT_EQ(kxo_entry(file, 1, 1), 30719531);         // row 1: 1023.984375 * 30000
    for (int k = 0; k < 4225; ++k)
        ASSERT_EQ(kxo_entry(file, 2, k), 983025000) << k;

    // Half away from zero after clamping to the target range; NaN gives 0.
    const std::pair<double, int32_t> to_i32[] = {
        {-0.5, -1}, {0.5, 1}, {-0.4, 0}, {2.5, 3}, {-2.5, -3}, {1e300, INT32_MAX}, {NAN, 0},
        {-1e300, INT32_MIN}, {2147483647.4, INT32_MAX}, {INFINITY, INT32_MAX}};
    for (const auto &[value, stored] : to_i32)
        EXPECT_EQ(vexo::round_to_i32(value), stored) << value;
    const std::pair<double, uint16_t> to_u16[] = {{-3, 0}, {65535.49, 65535}, {7e4, 65535}, {100.5, 101}};
    for (const auto &[value, stored] : to_u16)
        EXPECT_EQ(vexo::round_to_u16(value), stored) << value;
    at(t, 0, 0).x = 1e9;
    at(t, 1, 0).y = -1e9;
    at(t, 0, 1).z = NAN;
    ByteVec encoded(vexo::kKxoFileSize);
    vexo::encode_kxo(t, head, encoded.data());
    EXPECT_EQ(kxo_entry(encoded, 0, 0), INT32_MAX);
    EXPECT_EQ(kxo_entry(encoded, 1, 1), INT32_MIN);
    EXPECT_EQ(kxo_entry(encoded, 2, 65), 0);
}

TEST(CorrSaveCtbCor, LayoutRoundingAndClamps) {
    CorrTable t = neutral_table();
    at(t, 1, 0).x = -32667.0; // ctb word 100.5 -> 101; cor delta -100.5 -> -101
    at(t, 1, 0).y = -32667.6; // 99.9 -> 100
    at(t, 0, 1).x = 40000.0;  // clamps to 65535
    at(t, 0, 1).y = -40000.0; // clamps to 0
    at(t, 0, 0).x -= 3.5;     // cor delta +3.5 -> 4
    at(t, 0, 0).y += 2.5;     // -2.5 -> -3
    at(t, 1, 1).x = -1e12;    // cor delta saturates both ways
    at(t, 1, 1).y = 1e12;
    const std::string ctb = scratch_path("layout.ctb"), cor = scratch_path("layout.cor");
    ASSERT_EQ(vexo_corr_save_ctb(&t, ctb.c_str()), VEXO_OK);
    ASSERT_EQ(vexo_corr_save_cor(&t, cor.c_str(), 1234.5), VEXO_OK);

    const ByteVec w = read_file(ctb); // Y plane, then X plane, column-major
    ASSERT_EQ(w.size(), 16900u);
    auto word = [&](int plane, int k) { return vexo::load_le16(w.data() + plane * 8450 + 2 * k); };
    EXPECT_EQ(word(1, 1), 101); // entry 1 = row 1, column 0
    EXPECT_EQ(word(0, 1), 100);
    EXPECT_EQ(word(1, 65), 65535); // entry 65 = row 0, column 1
    EXPECT_EQ(word(0, 65), 0);
    EXPECT_EQ(word(1, 64 * 65), 65535);    // column 64
    EXPECT_EQ(word(1, 32 * 65 + 32), 32768); // 32767.5 rounds up

    const ByteVec d = read_file(cor); // label, scale, row-major i32 pairs, zero trailer
    ASSERT_EQ(d.size(), 33840u);
    EXPECT_EQ(std::string(d.begin(), d.begin() + 28), "JCZ_COR_2_1" + std::string(17, '\0'));
    EXPECT_EQ(ByteVec(d.end() - 4, d.end()), ByteVec(4, 0));
    EXPECT_EQ(vexo::load_le_f64(d.data() + 28), 1234.5);
    auto delta = [&](int k) { return vexo::load_le_i32(d.data() + 36 + 4 * k); };
    const int32_t deltas[][2] = {{0, 4}, {1, -3}, {4, 0}, {130, -101}, {132, INT32_MAX}, {133, INT32_MIN}};
    for (const auto &[k, value] : deltas)
        EXPECT_EQ(delta(k), value) << k;
}

TEST(CorrWriters, EveryLayoutLoadsBackCloseWithTheHeaderOnlyFromKxo) {
    CorrTable original = neutral_table();
    for (int k = 0; k < 4225; ++k) { // a smooth distortion well inside the output range
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
    // Half a kxo step, plus the decoder's last bits for exact halves.
    const struct { const std::string &path; double tolerance, z; } cases[] = { // z NaN: as saved
       {kxo, 1.0 / 60000 + 1e-9, NAN}, {ctb, 0.5, -32767.5}, {cor, 0.5, 0.0}};
    for (const auto &c : cases) {
        CorrTable back;
        ASSERT_EQ(vexo_corr_load_corr65(&back, c.path.c_str(), 0), VEXO_OK);
        for (int k = 0; k < 4225; ++k) {
            ASSERT_NEAR(back.cell[k].x, original.cell[k].x, c.tolerance) << c.path << " " << k;
            ASSERT_NEAR(back.cell[k].y, original.cell[k].y, c.tolerance) << c.path << " " << k;
            ASSERT_NEAR(back.cell[k].z, std::isnan(c.z) ? original.cell[k].z : c.z, c.tolerance);
        }
        CorrHead got;
        ASSERT_EQ(vexo_corr_get_corr_head(&got), VEXO_OK);
        const CorrHead want = &c.path == &kxo ? CorrHead{1, 12, 0x5C, {0, 0, 0}, 0xDEADBEEF} : CorrHead{};
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
    std::FILE *full = std::fopen("/dev/full", "wb"); // opens, then has no room
    for (const auto &save : savers) {
        EXPECT_EQ(save(nullptr, "x"), VEXO_ERROR_INVALID_PARAMETER);
        EXPECT_EQ(save(&t, nullptr), VEXO_ERROR_INVALID_PARAMETER);
        EXPECT_EQ(save(&t, missing_dir.c_str()), VEXO_ERROR_OPEN_FILE);
        EXPECT_TRUE(!full || save(&t, "/dev/full") == VEXO_ERROR_WRITE_FILE);
    }
    if (full)
        std::fclose(full);
    EXPECT_EQ(vexo_corr_save_kxo(&t, "x.kxo", nullptr), VEXO_ERROR_INVALID_PARAMETER);
}
