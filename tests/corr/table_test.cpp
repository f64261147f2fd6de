#include <cstddef>

#include "fixtures.hpp"

using namespace vexo_test;

static_assert(offsetof(CorrHead, header_size) == 2 && offsetof(CorrHead, tag) == 4 &&
                  offsetof(CorrHead, reserved) == 5 && offsetof(CorrHead, value) == 8,
              "CorrHead is the 12-byte file header");

TEST(CorrNeutral, WorkedValuesEveryCellAndFlagsUntouched) {
    CorrTable t;
    std::memset(&t, 0xCD, sizeof t);
    ASSERT_EQ(vexo_corr_set_neutral(&t), VEXO_OK);
    EXPECT_TRUE(at(t, 32, 32).x == 0 && at(t, 32, 32).y == 0);
    EXPECT_TRUE(at(t, 0, 64).x == 32767.5 && at(t, 0, 64).y == -32767.5);
    EXPECT_EQ(at(t, 1, 0).y, -31743.515625);
    for (int k = 0; k < 4225; ++k) {
        ASSERT_TRUE(t.cell[k].x == neutral(k % 65) && t.cell[k].y == neutral(k / 65)) << k;
        ASSERT_TRUE(t.cell[k].z == 0 && t.cell[k].flags == 0xCDCDCDCDu) << k;
    }
    EXPECT_EQ(vexo_corr_set_neutral(static_cast<CorrTable *>(nullptr)),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_get_corr_head(nullptr), VEXO_ERROR_INVALID_PARAMETER);
}
