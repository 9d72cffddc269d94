#include "base/c2d_array.h"

#include <climits>
#include <gtest/gtest.h>
#include <utility>

namespace tessarin {

namespace {

TEST(C2DArray, IsOneClearedBlockOfRows) {
    C2DArray<std::pair<int, int>> array(3, 5);
    ASSERT_TRUE(array.IsAllocated());
    for (size_t row = 0; row < 3; ++row) {
        EXPECT_EQ(array[row], array[0] + row * 5);
        for (size_t col = 0; col < 5; ++col) {
            EXPECT_EQ(array[row][col], std::make_pair(0, 0));
        }
    }
}

TEST(C2DArray, CountsThatCannotBeAreNotAllocated) {
    const std::pair<int32_t, int32_t> cases[] = {{-1, 5}, {5, -1}, {INT_MIN, INT_MIN}};
    for (const auto& [rows, cols] : cases) {
        EXPECT_FALSE(C2DArray<float>(rows, cols).IsAllocated()) << rows << " by " << cols;
    }
    const C2DArray<double> huge(INT_MAX, INT_MAX);
    EXPECT_FALSE(huge.IsAllocated());
    EXPECT_EQ(huge.GetRows(), 0);
    const C2DArray<double> empty(0, 7);
    EXPECT_TRUE(empty.IsAllocated());
    EXPECT_EQ(empty.GetCols(), 7);
}

} // namespace

} // namespace tessarin
