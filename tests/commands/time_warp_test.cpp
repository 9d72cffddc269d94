#include "commands/time_warp.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "commands/plain_warp.h"
#include "support/signals.h"

namespace tessarin {
namespace {

using table = std::vector<std::vector<float>>;

time_warp Warped(const table& distances) {
    time_warp warp;
    for (const std::vector<float>& row : distances) {
        warp.AddRow(row);
    }
    return warp;
}

table RandomTable(size_t rows, size_t columns, test::Noise& noise, int levels) {
    table distances(rows, std::vector<float>(columns));
    for (std::vector<float>& row : distances) {
        for (float& value : row) {
            value = std::floor(noise.Next(0.0f, static_cast<float>(levels)));
        }
    }
    return distances;
}

TEST(FrameDistance, IsTheRootOfTheSquaresUpToTheCount) {
    const float a[] = {1, 2, 3, 100};
    const float b[] = {4, 6, 3, 0};
    EXPECT_EQ(FrameDistance(a, b, 3), 5.0f);
    EXPECT_EQ(FrameDistance(a, b, 0), 0.0f);
    EXPECT_EQ(FrameDistance(a, b, -2), 0.0f);
}

// Few levels make ties, and these decide how long the path is.
TEST(TimeWarp, AgreesWithTheWholeTable) {
    test::Noise noise(5);
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        const size_t rows = 1 + noise.NextU32() % 9;
        const size_t columns = 1 + noise.NextU32() % 9;
        const table distances = RandomTable(rows, columns, noise, round % 2 == 0 ? 3 : 1000);
        const time_warp warp = Warped(distances);
        const test::plain_warp plain(distances);
        ASSERT_EQ(warp.CheapestColumn(), plain.CheapestColumn());
        for (const size_t column : {columns - 1, plain.CheapestColumn()}) {
            const float expected = plain.Distance(column);
            // Equal to the bit; where there is no step or no distance, not a number or infinite.
            ASSERT_TRUE(warp.Distance(column) == expected ||
                        (std::isnan(warp.Distance(column)) && std::isnan(expected)));
        }
    }
}

TEST(TimeWarp, HoldsItsBordersAgainstCostsAboveTheOutside) {
    EXPECT_EQ(std::bit_cast<uint32_t>(kNoWarpDistance), 0x7F2AAAAAu);
    const float huge = 3e38f;
    const time_warp warp = Warped({{huge, huge, huge}, {huge, huge, huge}, {1, 1, 1}});
    EXPECT_EQ(warp.CheapestColumn(), 2u);
    const time_warp notANumber = Warped({{NAN, 1, 1}, {1, NAN, 1}});
    EXPECT_EQ(notANumber.CheapestColumn(), 2u);
    EXPECT_TRUE(std::isnan(notANumber.Distance(2)));
}

TEST(TimeWarp, StartsAnewAfterAReset) {
    time_warp warp = Warped({{9, 9}, {9, 9}, {9, 9}});
    warp.Reset();
    EXPECT_EQ(warp.Rows(), 0u);
    warp.AddRow(std::vector<float>{1, 2, 3}); // another width, too
    EXPECT_EQ(warp.Distance(2), 6.0f / (2.0f * 2.0f));
}

} // namespace
} // namespace tessarin
