// SPDX-License-Identifier: MIT
// The binary parsers replace x, y and z of every cell and nothing else: a
// host's flags and the reserved word of each cell come through a load.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "corr/dispatch.hpp"

namespace {

struct Format {
    const char *name;
    uint32_t format;
    size_t size;
    const char *marker;
};

const Format kFormats[] = {
    {"ucf", VEXO_CORR_FORMAT_UCF, 4 + 3 * 8450, ""},
    {"ucf_short", VEXO_CORR_FORMAT_UCF, 2 * 8450, ""},
    {"ctb", VEXO_CORR_FORMAT_CTB, 2 * 8450, ""},
    {"ct5", VEXO_CORR_FORMAT_CT5, 64 + 2 * 264196, ""},
    {"gcd", VEXO_CORR_FORMAT_GCD, 4225 * 6, ""},
    {"kxo", VEXO_CORR_FORMAT_KXO, 50712, ""},
    {"crt", VEXO_CORR_FORMAT_CRT, 2048 + 4225 * 16, ""},
    {"cor_scaled", VEXO_CORR_FORMAT_COR, 56 + 4225 * 16, "JCZ_COR_3"},
    {"cor_integer", VEXO_CORR_FORMAT_COR, 36 + 4225 * 8, "JCZ_COR_2_1"},
    {"cor_plain", VEXO_CORR_FORMAT_COR, 519 + 4225 * 16, ""},
    {"fcr", VEXO_CORR_FORMAT_FCR, 65536, ""},
};

class BinaryParserKeeps : public testing::TestWithParam<Format> {};

TEST_P(BinaryParserKeeps, FlagsAndReservedWordOfEveryCell) {
    const Format &f = GetParam();
    std::vector<uint8_t> file(f.size);
    for (size_t i = 0; i < file.size(); ++i) file[i] = uint8_t(i % 8 == 7 ? 0x3F : i * 13);
    std::memcpy(file.data(), f.marker, std::strlen(f.marker));
    CorrTable table;
    for (uint32_t i = 0; i < 4225; ++i) {
        table.cell[i].flags = 0x80000000u | i * 7919u;
        table.cell[i].reserved = ~i;
    }
    CorrHead head{};
    ASSERT_EQ(vexo::parse_corr_bytes(f.format, {file.data(), file.size()}, table, head), VEXO_OK);
    for (uint32_t i = 0; i < 4225; ++i) {
        ASSERT_EQ(table.cell[i].flags, 0x80000000u | i * 7919u) << "cell " << i;
        ASSERT_EQ(table.cell[i].reserved, ~i) << "cell " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, BinaryParserKeeps, testing::ValuesIn(kFormats),
                         [](const auto &info) { return std::string(info.param.name); });

} // namespace
