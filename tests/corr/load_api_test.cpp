// SPDX-License-Identifier: MIT
// The neutral table, refused arguments across the correction functions, and
// the file-level load: format by number or name, file errors, the header.
#include <cstddef>

#include "corr/dispatch.hpp"
#include "corr/writers.hpp"
#include "fixtures.hpp"

using namespace vexo_test;

TEST(CorrApi, NeutralTableAndNullArgumentsRefused) {
    CorrTable t;
    std::memset(&t, 0xCD, sizeof t);
    ASSERT_EQ(vexo_corr_set_neutral(&t), VEXO_OK); // flags untouched
    for (int k = 0; k < 4225; ++k) {
        ASSERT_EQ(xyz(t.cell[k]), (Xyz{neutral(k % 65), neutral(k / 65), 0})) << k;
        ASSERT_EQ(t.cell[k].flags, 0xCDCDCDCDu) << k;
    }
    const CorrTable before = t;
    const CorrHead head{};
    const GeomPoint n = point(1, 1);
    const double p[2] = {0, 0};
    CorrTable *const no_table = nullptr;
    const uint32_t statuses[] = {vexo_corr_set_neutral(no_table),
                                 vexo_corr_get_corr_head(nullptr),
                                 vexo_corr_load_corr65(no_table, "x.kxo", 0),
                                 vexo_corr_load_corr65(&t, nullptr, 0),
                                 vexo_corr_save_kxo(nullptr, "x", &head),
                                 vexo_corr_save_kxo(&t, nullptr, &head),
                                 vexo_corr_save_kxo(&t, "x.kxo", nullptr),
                                 vexo_corr_save_ctb(nullptr, "x"),
                                 vexo_corr_save_ctb(&t, nullptr),
                                 vexo_corr_save_cor(nullptr, "x", 1),
                                 vexo_corr_save_cor(&t, nullptr, 1),
                                 vexo_corr_interpolate(1, &n, &n, 1, nullptr),
                                 vexo_corr_interpolate(1, nullptr, &n, 1, &t),
                                 vexo_corr_set_spatial(nullptr, 0, 2),
                                 vexo_corr_set_focal(nullptr, 1, 1, 1),
                                 vexo_corr_interpolate(1, &n, nullptr, 1, &t),
                                 vexo_corr_adjust_single(nullptr, p, p, 1, 3),
                                 vexo_corr_adjust_single(&t, nullptr, p, 1, 3),
                                 vexo_corr_adjust_single(&t, p, nullptr, 1, 3),
                                 vexo_corr_set_scale(nullptr, 1)};
    for (size_t i = 0; i < std::size(statuses); ++i)
        EXPECT_EQ(statuses[i], VEXO_ERROR_INVALID_PARAMETER) << i;
    EXPECT_TRUE(same(t, before));
}

TEST(CorrDispatch, ExtensionSearchOrder) {
    const std::pair<const char *, uint32_t> cases[] = {
        {"head.scor", 11},
        {"HEAD.SCOR", 11},
        {"head.cor", 9},
        {"head.COR", 9},
        {"a.crt", 8},
        {"a.ucf", 1},
        {"a.UCF", 1},
        {"a.ctb", 2},
        {"a.ct5", 3},
        {"a.gcd", 4},
        {"a.kxo", 5},
        {"a.KXO", 5},
        {"a.xml", 6},
        {"a.txt", 7},
        {"a.fcr", 10},
        {"a.FCR", 10},
        {"table.Kxo", 0},
        {"table.bin", 0},
        {"", 0},
        {".sco", 0},
        // Anywhere in the name, in a fixed order of extensions.
        {"jobs.cor/table.txt", 9},
        {"x.kxo.bak", 5},
        {"lens.txt/old.ucf", 1},
        {"a.fcrx.xml", 6}};
    for (const auto &[path, format] : cases)
        EXPECT_EQ(vexo::format_from_path(path), format) << path;
}

// A load starts from the neutral table, and every failure leaves it neutral.
// Every load zeroes the header but a kxo one, which takes it from as many
// bytes as the file has (the rest zero, reserved bytes as read) even when
// the file is then too short.
TEST(CorrLoadFile, StatusesNeutralStartAndHeader) {
    const CorrTable neutral = neutral_table();
    ByteVec kxo_bytes(vexo::kKxoFileSize);
    vexo::encode_kxo(neutral, {0, 0, 0x42, {}, 0xCAFEF00D}, kxo_bytes.data());
    kxo_bytes[7] = 0xCC;
    auto cut = [&](long n) {
        return scratch_file("cut" + std::to_string(n) + ".kxo",
                            std::string(kxo_bytes.begin(), kxo_bytes.begin() + n));
    };
    const std::string fcr = scratch_file("zero.fcr", std::string(65536 + 1000, 0)), // no deltas
        bin = scratch_file("zero.bin", std::string(65536, 0)),
                      txt = scratch_file("size.txt", "SIZE:9"),
                      scor = scratch_file("head.scor", "[LMCorrectData]\n"),
                      empty = scratch_file("e.ucf", ""), huge = scratch_file("huge.fcr", ""),
                      folder = scratch_path("folder.kxo"), missing = scratch_path("missing.kxo"),
                      kxo = cut(long(kxo_bytes.size()));
    std::filesystem::create_directories(folder);
    std::filesystem::resize_file(huge, (uintmax_t{64} << 20) + 1); // sparse; refused unread
    const CorrHead cut12{1, 12, 0x42, {0, 0, 0xCC}, 0xCAFEF00D};
    const struct {
        std::string path;
        uint32_t format, status;
        CorrHead head;
    } cases[] = {{fcr, 0, VEXO_OK, {}},     {bin, 10, VEXO_OK, {}},
                 {txt, 0, VEXO_OK, {}},     {scor, 0, 25, {}},
                 {bin, 0, 34, {}},          {missing, 12, 34, {}},
                 {bin, 0xFFFFFFFF, 34, {}}, {kxo, 3, 21, {}}, // the number decides, not the name
                 {missing, 0, 19, {}},      {folder, 0, 19, {}},
                 {empty, 0, 21, {}},        {huge, 0, 7, {}},
                 {cut(0), 0, 21, {}},       {cut(3), 0, 21, {1, 0, 0, {}, 0}},
                 {cut(12), 0, 21, cut12},   {cut(6), 0, 21, {1, 12, 0x42, {}, 0}},
                 {cut(50711), 0, 21, cut12}};
    CorrTable t;
    CorrHead h;
    for (const auto &c : cases) {
        ASSERT_EQ(vexo_corr_load_corr65(&t, kxo.c_str(), 0), VEXO_OK); // a header to replace
        std::memset(&t, 0xAB, sizeof t);
        std::memset(&h, 0x77, sizeof h);
        EXPECT_EQ(vexo_corr_load_corr65(&t, c.path.c_str(), c.format), c.status) << c.path;
        EXPECT_TRUE(same(t, neutral)) << c.path << " " << c.format;
        EXPECT_EQ(vexo_corr_get_corr_head(&h), VEXO_OK) << c.path;
        EXPECT_TRUE(same_bytes(h, c.head)) << c.path;
    }
    ASSERT_EQ(vexo_corr_load_corr65(&t, kxo.c_str(), 0), VEXO_OK); // a refused load zeroes it too
    EXPECT_EQ(vexo_corr_load_corr65(&t, nullptr, 0), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_get_corr_head(&h), VEXO_OK);
    EXPECT_TRUE(same_bytes(h, CorrHead{}));
}
