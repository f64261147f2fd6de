// SPDX-License-Identifier: MIT
// The version string agrees with the header's macros.
#include <gtest/gtest.h>

#include <string>

#include "vexo.h"

TEST(Version, StringSpellsTheHeaderMacros) {
    const std::string expected = std::to_string(VEXO_VERSION_MAJOR) + "." +
                                 std::to_string(VEXO_VERSION_MINOR) + "." +
                                 std::to_string(VEXO_VERSION_PATCH);
    EXPECT_EQ(std::string(vexo_util_version_string()), expected); // number: tests/abi
}
