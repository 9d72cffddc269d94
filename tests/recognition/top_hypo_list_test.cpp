#include "recognition/sentences/top_hypo_list.h"

#include <algorithm>
#include <functional>
#include <vector>

#include <gmock/gmock.h>

#include "support/signals.h"

namespace tessarin {
namespace {

using testing::ElementsAre;

std::vector<double> ScoresOf(const TopHypoList& list) {
    std::vector<double> scores;
    for (const TopHypoList::node* node = list.Highest(); node != nullptr; node = node->down) {
        scores.push_back(node->hype.score);
    }
    return scores;
}

void Insert(TopHypoList& list, const std::vector<double>& scores) {
    for (const double score : scores) {
        list.Insert({0, 0, score, {}});
    }
}

// Kept: the upper neighbour of 3 stays 5 when 4 comes in between.
TEST(TopHypoList, LinksUpwardsPastWhatCameBetween) {
    TopHypoList list(3);
    Insert(list, {5, 3, 4});
    EXPECT_THAT(ScoresOf(list), ElementsAre(5, 4, 3));
    // 3.5 walks from 3 to 5, and stands below that; 3 is one too many, and with it goes all that
    // stands between it and 5.
    Insert(list, {3.5});
    EXPECT_THAT(ScoresOf(list), ElementsAre(5));
    // What is lost is still counted: there is no room for another one.
    Insert(list, {2});
    EXPECT_THAT(ScoresOf(list), ElementsAre(5));
    // The old highest does learn of a new one.
    Insert(list, {6});
    EXPECT_THAT(ScoresOf(list), ElementsAre(6));
}

TEST(TopHypoList, GetsItsNodesBackWhenItIsEmptied) {
    TopHypoList list(4);
    for (int round = 0; round < 50; ++round) {
        Insert(list, {9, 1, 5, 3, 2, 7, 4, 8});
        list.Clear();
        EXPECT_EQ(list.Highest(), nullptr);
    }
    Insert(list, {1, 2, 3, 4});
    EXPECT_THAT(ScoresOf(list), ElementsAre(4, 3, 2, 1));
}

TEST(TopHypoList, SurvivesAnyOrder) {
    test::Noise noise(4);
    for (const size_t room : {1, 2, 5, 30}) {
        TopHypoList list(room);
        for (int round = 0; round < 200; ++round) {
            list.Clear();
            double highest = -100.0;
            for (int i = 0; i < 60; ++i) {
                const double score = noise.NextU32() % 40;
                highest = std::max(highest, score);
                Insert(list, {score});
                const std::vector<double> scores = ScoresOf(list);
                ASSERT_LE(scores.size(), room);
                ASSERT_EQ(scores.front(), highest);
            }
        }
    }
}

} // namespace
} // namespace tessarin
