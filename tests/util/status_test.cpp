// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "vexo.h"

namespace {

struct Named {
    uint32_t status;
    const char *macro; // spelled by the preprocessor, not by the library
};
void PrintTo(const Named &n, std::ostream *os) {
    *os << n.macro << " = " << n.status;
}
#define NAMED(m)                                                                                   \
    Named {                                                                                        \
        m, #m                                                                                      \
    }
const Named kNamed[] = {
    NAMED(VEXO_OK),
    NAMED(VEXO_ERROR_NO_RESULT),
    NAMED(VEXO_ERROR_INVALID_DATA),
    NAMED(VEXO_ERROR_NO_HANDLE),
    NAMED(VEXO_ERROR_NO_MEMORY),
    NAMED(VEXO_ERROR_INVALID_PARAMETER),
    NAMED(VEXO_ERROR_FILE_ACCESS),
    NAMED(VEXO_ERROR_OPEN_FILE),
    NAMED(VEXO_ERROR_WRITE_FILE),
    NAMED(VEXO_ERROR_READ_FILE),
    NAMED(VEXO_ERROR_NUMERIC),
    NAMED(VEXO_ERROR_INVALID_HEADER),
    NAMED(VEXO_ERROR_UNKNOWN_FORMAT),
    NAMED(VEXO_ERROR_NO_RATIO_MATCH),
    NAMED(VEXO_ERROR_NO_POINT_PAIRS),
};
#undef NAMED

class StatusNamed : public ::testing::TestWithParam<Named> {};

TEST_P(StatusNamed, TextIsOneLowerCaseLine) {
    const std::string text = vexo_util_status_text(GetParam().status);
    ASSERT_FALSE(text.empty()) << GetParam().macro;
    EXPECT_TRUE(std::islower(static_cast<unsigned char>(text[0])))
        << GetParam().macro << ": " << text;
    EXPECT_EQ(text.find_first_of("\r\n"), std::string::npos) << GetParam().macro << ": " << text;
    EXPECT_NE(text, "unknown status") << GetParam().macro;
}

INSTANTIATE_TEST_SUITE_P(EveryStatus, StatusNamed, ::testing::ValuesIn(kNamed),
                         [](const ::testing::TestParamInfo<Named> &info) {
                             return std::string(info.param.macro);
                         });

// The header itself as the oracle: every VEXO_OK / VEXO_ERROR_* definition,
// value as written there, so a status added later without a name fails here.
std::map<std::string, uint32_t> statuses_in_header() {
    const auto header =
        std::filesystem::path(__FILE__).parent_path() / ".." / ".." / "include" / "vexo.h";
    std::ifstream in(header);
    std::stringstream text;
    text << in.rdbuf();
    const std::string s = text.str();
    const std::regex define(R"(#define\s+(VEXO_OK|VEXO_ERROR_\w+)\s+(0x[0-9A-Fa-f]+|\d+)u)");
    std::map<std::string, uint32_t> found;
    for (std::sregex_iterator it(s.begin(), s.end(), define), end; it != end; ++it)
        found[(*it)[1]] = uint32_t(std::strtoul((*it)[2].str().c_str(), nullptr, 0));
    return found;
}

TEST(StatusName, EveryStatusInTheHeaderHasItsOwnName) {
    const auto found = statuses_in_header();
    ASSERT_GE(found.size(), std::size(kNamed));
    for (const auto &[macro, value] : found)
        EXPECT_STREQ(vexo_util_status_name(value), macro.c_str()) << "value " << value;
}

TEST(StatusText, DistinctForEveryStatus) {
    std::set<std::string> texts;
    for (const Named &n : kNamed)
        EXPECT_TRUE(texts.insert(vexo_util_status_text(n.status)).second)
            << n.macro << " repeats \"" << vexo_util_status_text(n.status) << "\"";
}

TEST(StatusText, OpenFileSaysTheFileCouldNotBeOpened) {
    EXPECT_STREQ(vexo_util_status_text(VEXO_ERROR_OPEN_FILE), "data file could not be opened");
}

class StatusUnknown : public ::testing::TestWithParam<uint32_t> {};

TEST_P(StatusUnknown, NameAndTextSayUnknown) {
    EXPECT_STREQ(vexo_util_status_name(GetParam()), "VEXO_STATUS_UNKNOWN");
    EXPECT_STREQ(vexo_util_status_text(GetParam()), "unknown status");
}

// Neighbours of real values, the recognition statuses' low half alone, and the extremes.
INSTANTIATE_TEST_SUITE_P(Values, StatusUnknown,
                         ::testing::Values(0u, 2u, 17u, 35u, 0x10000008u, 0x30000009u,
                                           0x00000009u | 0x80000000u, 0xFFFFFFFFu));

} // namespace
