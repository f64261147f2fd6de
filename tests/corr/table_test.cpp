#include <cstddef>
#include <cstring>

#include <gtest/gtest.h>

#include "fixtures.hpp"
#include "vexo.h"

using vexo_test::neutral;

static_assert(sizeof(CorrHead) == 12, "CorrHead is the 12-byte file header");
static_assert(offsetof(CorrHead, header_size) == 2, "header_size at 2");
static_assert(offsetof(CorrHead, tag) == 4, "tag at 4");
static_assert(offsetof(CorrHead, reserved) == 5, "reserved at 5");
static_assert(offsetof(CorrHead, value) == 8, "value at 8");
static_assert(sizeof(CorrTable) == 135200, "4225 cells of 32 bytes");

TEST(CorrNeutral, WorkedExamplesAndEveryCell) {
    CorrTable t;
    std::memset(&t, 0xCD, sizeof t); // garbage everywhere, flags included
    ASSERT_EQ(vexo_corr_set_neutral(&t), VEXO_OK);

    const GeomPoint &centre = t.cell[32 * 65 + 32];
    EXPECT_EQ(centre.x, 0.0);
    EXPECT_EQ(centre.y, 0.0);
    EXPECT_EQ(centre.z, 0.0);
    const GeomPoint &row0_col64 = t.cell[0 * 65 + 64];
    EXPECT_EQ(row0_col64.x, 32767.5);
    EXPECT_EQ(row0_col64.y, -32767.5);
    EXPECT_EQ(t.cell[1 * 65 + 0].y, -31743.515625);
    EXPECT_EQ(t.cell[0].x, -32767.5);
    EXPECT_EQ(t.cell[4224].x, 32767.5);
    EXPECT_EQ(t.cell[4224].y, 32767.5);

    uint32_t garbage_flags;
    std::memset(&garbage_flags, 0xCD, sizeof garbage_flags);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            const GeomPoint &p = t.cell[r * 65 + c];
            ASSERT_EQ(p.x, neutral(c)) << r << "," << c;
            ASSERT_EQ(p.y, neutral(r)) << r << "," << c;
            ASSERT_EQ(p.z, 0.0);
            ASSERT_EQ(p.flags, garbage_flags) << "flags must stay untouched";
        }
    // The node pitch is 65535 / 64 exactly.
    EXPECT_EQ(t.cell[1].x - t.cell[0].x, 1023.984375);
}

TEST(CorrNeutral, NullPointersAreRefused) {
    EXPECT_EQ(vexo_corr_set_neutral(static_cast<CorrTable *>(nullptr)), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_get_corr_head(nullptr), VEXO_ERROR_INVALID_PARAMETER);
}
