#include "base/quib_allocator.h"

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>

namespace tessarin {

namespace {

constexpr int32_t kBlock = 64;

char* Take(quib_allocator& pool, int32_t size) {
    return static_cast<char*>(pool.Alloc(size));
}

TEST(quib_allocator, PacksRecordsEndToEnd) {
    quib_allocator pool(kBlock);
    char* first = Take(pool, 12);
    EXPECT_EQ(Take(pool, 4), first + 12);
    EXPECT_EQ(Take(pool, 0), first + 16);
    EXPECT_EQ(Take(pool, 3), first + 16);
    EXPECT_EQ(Take(pool, 4), first + 19) << "nothing is aligned";
}

TEST(quib_allocator, NeverFillsABlockToItsLastByte) {
    quib_allocator pool(kBlock);
    char* first = Take(pool, kBlock - 4);
    EXPECT_NE(Take(pool, 4), first + kBlock - 4) << "an exact fit opens a block";
    quib_allocator other(kBlock);
    first = Take(other, 4);
    EXPECT_EQ(Take(other, kBlock - 5), first + 4);
    quib_allocator large(kBlock);
    EXPECT_NE(Take(large, kBlock - 1), nullptr);
}

TEST(quib_allocator, LargeRecordsGetAClearedBlockToThemselves) {
    quib_allocator pool(kBlock);
    const char* small = Take(pool, 4);
    for (const int32_t size : {kBlock, 10 * kBlock}) {
        const char* large = Take(pool, size);
        EXPECT_TRUE(std::all_of(large, large + size, [](char byte) { return byte == 0; }));
    }
    const char* next = Take(pool, 4);
    EXPECT_NE(next, small + 4) << "the block that was being filled is left";
    EXPECT_EQ(Take(pool, 4), next + 4);
}

TEST(quib_allocator, ServesAgainAfterReset) {
    quib_allocator pool(kBlock);
    for (int round = 0; round < 2; ++round) {
        char* first = Take(pool, 8);
        EXPECT_EQ(Take(pool, 8), first + 8);
        Take(pool, 100);
        pool.Reset();
    }
}

TEST(quib_allocator, SizesThatCannotBeGiveNull) {
    quib_allocator pool(kBlock);
    EXPECT_EQ(pool.Alloc(-1), nullptr);
    EXPECT_EQ(pool.Alloc(INT_MIN), nullptr);
    EXPECT_NE(pool.Alloc(4), nullptr);
    quib_allocator negative(-1);
    EXPECT_NE(negative.Alloc(4), nullptr) << "every record is a large one";
}

} // namespace

} // namespace tessarin
