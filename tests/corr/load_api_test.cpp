// The file-level load: format by number or name, file errors, the header.
#include <cstring>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "corr/dispatch.hpp"
#include "fixtures.hpp"
#include "vexo.h"

using namespace vexo_test;

namespace {

CorrHead head_now() {
    CorrHead h;
    std::memset(&h, 0x77, sizeof h);
    EXPECT_EQ(vexo_corr_get_corr_head(&h), VEXO_OK);
    return h;
}

bool head_is_zero(const CorrHead &h) {
    const CorrHead zero{};
    return std::memcmp(&h, &zero, sizeof h) == 0;
}

std::string write_kxo_with_tag(const std::string &name, uint8_t tag, uint32_t value) {
    CorrTable t;
    vexo_corr_set_neutral(&t);
    CorrHead head{};
    head.tag = tag;
    head.value = value;
    const std::string path = scratch_path(name);
    EXPECT_EQ(vexo_corr_save_kxo(&t, path.c_str(), &head), VEXO_OK);
    return path;
}

void expect_neutral(const CorrTable &t) {
    for (int k = 0; k < 4225; ++k) {
        ASSERT_EQ(t.cell[k].x, neutral(k % 65)) << k;
        ASSERT_EQ(t.cell[k].y, neutral(k / 65)) << k;
        ASSERT_EQ(t.cell[k].z, 0.0) << k;
    }
}

} // namespace

TEST(CorrDispatch, ExtensionSearchOrder) {
    struct Case {
        const char *path;
        uint32_t format;
    };
    const Case cases[] = {
        {"head.scor", 11},           {"HEAD.SCOR", 11},
        {"head.cor", 9},             {"head.COR", 9},
        {"a.crt", 8},                {"a.ucf", 1},
        {"a.UCF", 1},                {"a.ctb", 2},
        {"a.ct5", 3},                {"a.gcd", 4},
        {"a.kxo", 5},                {"a.KXO", 5},
        {"a.xml", 6},                {"a.txt", 7},
        {"a.fcr", 10},               {"a.FCR", 10},
        {"jobs.cor/table.txt", 9},   // ".cor" is searched before ".txt"
        {"x.kxo.bak", 5},            // anywhere in the name
        {"lens.txt/old.ucf", 1},     // ".ucf" before ".txt"
        {"table.Kxo", 0},            // mixed case is not recognised
        {"table.bin", 0},            {"", 0},
        {".sco", 0},                 {"a.fcrx.xml", 6},
    };
    for (const Case &c : cases)
        EXPECT_EQ(vexo::format_from_path(c.path), c.format) << c.path;
}

TEST(CorrLoadFile, FormatNumbersAndNames) {
    const std::string by_name = write_kxo_with_tag("by_name.kxo", 3, 33);
    const std::string odd_name = scratch_path("table.bin");
    std::filesystem::copy_file(by_name, odd_name,
                               std::filesystem::copy_options::overwrite_existing);
    CorrTable t;
    EXPECT_EQ(vexo_corr_load_corr65(&t, by_name.c_str(), 0), VEXO_OK);
    EXPECT_EQ(vexo_corr_load_corr65(&t, odd_name.c_str(), VEXO_CORR_FORMAT_KXO), VEXO_OK);
    EXPECT_EQ(head_now().tag, 3);

    // Unknown names and numbers: 34, and the table is neutral regardless.
    for (uint32_t format : {0u, 12u, 99u, 0xFFFFFFFFu}) {
        std::memset(&t, 0xAB, sizeof t);
        EXPECT_EQ(vexo_corr_load_corr65(&t, odd_name.c_str(), format), VEXO_ERROR_UNKNOWN_FORMAT)
            << format;
        expect_neutral(t);
    }
    // A known format decides the parser even against the name.
    EXPECT_EQ(vexo_corr_load_corr65(&t, by_name.c_str(), VEXO_CORR_FORMAT_CT5),
              VEXO_ERROR_READ_FILE);
    EXPECT_TRUE(head_is_zero(head_now()));
}

TEST(CorrLoadFile, BadPathsAndArguments) {
    CorrTable t;
    EXPECT_EQ(vexo_corr_load_corr65(static_cast<CorrTable *>(nullptr), "a.kxo", 0), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_load_corr65(&t, nullptr, 0), VEXO_ERROR_INVALID_PARAMETER);
    const std::string missing = scratch_path("missing.kxo");
    EXPECT_EQ(vexo_corr_load_corr65(&t, missing.c_str(), 0), VEXO_ERROR_OPEN_FILE);
    EXPECT_EQ(vexo_corr_load_corr65(&t, missing.c_str(), VEXO_CORR_FORMAT_FCR),
              VEXO_ERROR_OPEN_FILE);

    // A folder whose name looks like a table is refused cleanly.
    const std::string folder = scratch_path("folder.kxo");
    std::filesystem::create_directories(folder);
    for (uint32_t format : {0u, 1u, 3u, 5u, 10u})
        EXPECT_EQ(vexo_corr_load_corr65(&t, folder.c_str(), format), VEXO_ERROR_OPEN_FILE);

    // Empty files of every binary format are short.
    for (const char *name : {"e.ucf", "e.ctb", "e.ct5", "e.gcd", "e.kxo", "e.crt", "e.cor",
                             "e.fcr"}) {
        const std::string path = scratch_path(name);
        write_file(path, {});
        std::memset(&t, 0xAB, sizeof t);
        EXPECT_EQ(vexo_corr_load_corr65(&t, path.c_str(), 0), VEXO_ERROR_READ_FILE) << name;
        expect_neutral(t);
    }

    // Larger than any correction file: refused before it is read.
    const std::string huge = scratch_path("huge.fcr");
    {
        std::ofstream touch(huge);
    }
    std::filesystem::resize_file(huge, (uintmax_t{64} << 20) + 1); // sparse
    EXPECT_EQ(vexo_corr_load_corr65(&t, huge.c_str(), 0), VEXO_ERROR_INVALID_DATA);
    std::filesystem::resize_file(huge, 65536 + 1000);
    EXPECT_EQ(vexo_corr_load_corr65(&t, huge.c_str(), 0), VEXO_OK);
    std::filesystem::remove(huge);
}

TEST(CorrLoadFile, HeaderFollowsTheLastLoad) {
    const std::string kxo = write_kxo_with_tag("head.kxo", 0x42, 0xCAFEF00D);
    const std::string ucf = scratch_path("head.ucf");
    write_file(ucf, ByteVec(16900, 0));
    CorrTable t;

    ASSERT_EQ(vexo_corr_load_corr65(&t, kxo.c_str(), 0), VEXO_OK);
    CorrHead h = head_now();
    EXPECT_EQ(h.version, 1);
    EXPECT_EQ(h.header_size, 12);
    EXPECT_EQ(h.tag, 0x42);
    EXPECT_EQ(h.value, 0xCAFEF00Du);

    // Any other format, a failed load or a refused argument zeroes it.
    ASSERT_EQ(vexo_corr_load_corr65(&t, ucf.c_str(), 0), VEXO_OK);
    EXPECT_TRUE(head_is_zero(head_now()));
    ASSERT_EQ(vexo_corr_load_corr65(&t, kxo.c_str(), 0), VEXO_OK);
    EXPECT_EQ(vexo_corr_load_corr65(&t, "no-such-file.kxo", 0), VEXO_ERROR_OPEN_FILE);
    EXPECT_TRUE(head_is_zero(head_now()));
    ASSERT_EQ(vexo_corr_load_corr65(&t, kxo.c_str(), 0), VEXO_OK);
    EXPECT_EQ(vexo_corr_load_corr65(&t, ucf.c_str(), 77), VEXO_ERROR_UNKNOWN_FORMAT);
    EXPECT_TRUE(head_is_zero(head_now()));

    // A truncated kxo file fails but still replaces the header.
    ByteVec cut = read_file(kxo);
    cut.resize(20);
    cut[4] = 0x17;
    const std::string short_kxo = scratch_path("short.kxo");
    write_file(short_kxo, cut);
    EXPECT_EQ(vexo_corr_load_corr65(&t, short_kxo.c_str(), 0), VEXO_ERROR_READ_FILE);
    h = head_now();
    EXPECT_EQ(h.tag, 0x17);
    EXPECT_EQ(h.value, 0xCAFEF00Du);
    expect_neutral(t);
}
