// SPDX-License-Identifier: MIT
// The version string agrees with the header's macros.
#include <gtest/gtest.h>

#include "vexo.h"

TEST(Version, String) {
    EXPECT_STREQ(vexo_util_version_string(), "0.1.0"); // the number is checked in tests/abi
}
