#include "session/script_transcriber.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace tessarin;
using testing::ElementsAre;

namespace {

const token_groups kOneOhOne = {{"wAHn"}, {"OW"}, {"wAHn"}};
const token_groups kHundred = {{"wAHn"}, {"hAH", "hIH"}, {"wAHn"}};
const token_groups kHundredAnd = {{"wAHn"}, {"hAH", "hIH"}, {"AEnd", "AHnd"}, {"wAHn"}};

TEST(JoinReadings, SaysOnceWhatReadingsHaveInCommon) {
    EXPECT_THAT(
        JoinReadings({kOneOhOne, kHundred}),
        ElementsAre(ElementsAre("wAHn"), ElementsAre("OW", "hAH", "hIH"), ElementsAre("wAHn")));
    // No choice is empty, even where one reading has what the other has and more.
    EXPECT_THAT(JoinReadings({kHundred, kHundredAnd}),
                ElementsAre(ElementsAre("wAHn"), ElementsAre("hAH", "hIH"),
                            ElementsAre("wAHn", "AEndwAHn", "AHndwAHn")));
    EXPECT_THAT(JoinReadings({{{"nAYn"}}, {{"nAYn"}, {"klAAk"}}}),
                ElementsAre(ElementsAre("nAYn", "nAYnklAAk")));
    EXPECT_THAT(JoinReadings({{{"OW"}}, {{"OW"}}}), ElementsAre(ElementsAre("OW")));
}

TEST(JoinReadings, BoundsTheChoice) {
    std::vector<token_groups> readings;
    for (const char* const word : {"a", "b", "c", "d", "e", "f"}) {
        readings.push_back({});
        for (int i = 0; i < 9; ++i) {
            readings.back().push_back({word, "p", "q"});
        }
    }
    const token_groups joined = JoinReadings(readings);
    ASSERT_EQ(joined.size(), 1u);
    EXPECT_EQ(joined.front().size(), 24u); // four of each
}

TEST(CanSay, TriesAllWaysThroughTheGroups) {
    EXPECT_TRUE(CanSay(kOneOhOne, "wAHnOWwAHn"));
    EXPECT_FALSE(CanSay(kOneOhOne, "wAHnOW"));
    EXPECT_FALSE(CanSay(kOneOhOne, "wAHnOWwAHnz"));
    EXPECT_TRUE(CanSay(kHundredAnd, "wAHnhIHAHndwAHn"));
    EXPECT_TRUE(CanSay({{"a", "ab"}, {"bc", "c"}}, "abc"));
    EXPECT_TRUE(CanSay({{"axb"}}, "ab")); // silences are left out
    EXPECT_FALSE(CanSay({}, "a"));
}

} // namespace
