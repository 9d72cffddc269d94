#include "recognition/free/hmm_hypothesis_tree.h"

#include <gtest/gtest.h>

#include <climits>

namespace tessarin::test {
namespace {

TEST(HypothesisTree, RemembersWhichHypothesisEndedThePhoneBefore) {
    CHmmHypothesisTree tree(4);
    ASSERT_TRUE(tree.AddRoot(7, 0.5, 0));
    ASSERT_TRUE(tree.AddChild(tree[0], 0, 7, 0.4, 1));
    ASSERT_TRUE(tree.AddChild(tree[1], 1, 9, 0.3, 0));
    ASSERT_TRUE(tree.AddChild(tree[2], 2, 9, 0.2, 0));
    EXPECT_EQ(tree[1].frames, 2);
    EXPECT_EQ(tree[1].ended, -1);
    EXPECT_EQ(tree[2].frames, 1);
    EXPECT_EQ(tree[2].ended, 1);
    EXPECT_EQ(tree[3].frames, 2);
    EXPECT_EQ(tree[3].ended, 1);
    EXPECT_EQ(tree[3].parent, 2);

    tree[3].frames = 0xFFFF; // the counter wraps
    ASSERT_TRUE(tree.AddChild(tree[3], 3, 9, 0.1, 0));
    EXPECT_EQ(tree[4].frames, 0);
}

TEST(HypothesisTree, GrowsInWholeSteps) {
    CHmmHypothesisTree tree(10);
    EXPECT_TRUE(tree.Grow(25));
    EXPECT_EQ(tree.GetCapacity(), 30);
    EXPECT_TRUE(tree.Grow(5)); // one step more in any case
    EXPECT_EQ(tree.GetCapacity(), 40);
    EXPECT_TRUE(tree.Reserve(39));
    EXPECT_EQ(tree.GetCapacity(), 40);
    EXPECT_TRUE(tree.Reserve(40)); // room to spare for one
    EXPECT_EQ(tree.GetCapacity(), 50);
    EXPECT_FALSE(tree.Reserve(INT_MAX));
    EXPECT_FALSE(tree.Grow(INT_MAX));
    EXPECT_EQ(tree.GetCapacity(), 50);
    EXPECT_EQ(CHmmHypothesisTree(0).GetCapacity(), 0);
}

TEST(HypothesisTree, CompactingMovesAsManyBytesAsHypotheses) {
    CHmmHypothesisTree tree(8);
    for (uint16_t phone = 1; phone <= 6; ++phone) {
        ASSERT_TRUE(tree.AddRoot(phone, phone, phone));
    }
    ASSERT_TRUE(tree.AddChild(tree[5], 5, 8, 1.0, 1));
    tree.SetFirstLive(4);
    tree.Compact();
    EXPECT_EQ(tree.GetCount(), 3);
    EXPECT_EQ(tree[0].phone, 5); // 3 bytes
    EXPECT_EQ(tree[0].score, 1.0);
    EXPECT_EQ(tree[1].phone, 2);
    EXPECT_EQ(tree[2].parent, -1);

    tree.SetFirstLive(9);
    tree.Compact();
    EXPECT_EQ(tree.GetCount(), 0);
}

} // namespace
} // namespace tessarin::test
