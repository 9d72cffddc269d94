#include "recognition/graph/state_graph.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fixtures.h"

namespace tessarin::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Pair;

class StateGraph : public testing::Test {
protected:
    void Build(bool gapSilence = true) {
        state_graph_builder builder(*model, pool);
        builder.AddMarkers(tokens.markers, gapSilence, starts, ends);
        count = builder.StateCount();
        graph = builder.CopyGraph();
    }
    /// The phone of each position, by label.
    std::string Phones() const {
        std::string phones;
        for (uint32_t n = 0; n < count; n += 3) {
            phones += model->labels[graph[n]->phone];
        }
        return phones;
    }
    std::vector<std::pair<uint32_t, float>> Arcs(uint32_t state) const {
        std::vector<std::pair<uint32_t, float>> arcs;
        for (int i = 0; i < graph[state]->predecessors; ++i) {
            arcs.emplace_back(graph[state]->Arcs()[i].state, graph[state]->Arcs()[i].probability);
        }
        return arcs;
    }
    std::pair<uint32_t, uint32_t> Place(size_t token) const {
        return {tokens.markers[token].first_state, tokens.markers[token].last_state};
    }

    std::unique_ptr<CAccousticHMM> model = MakeLikelihoodModel({"x", "AA", "s", "t"}, 0.75f);
    quib_allocator pool{32768};
    token_list tokens;
    std::vector<uint32_t> starts;
    std::vector<uint32_t> ends;
    uint32_t count = 0;
    state_rec** graph = nullptr;
};

TEST_F(StateGraph, ChainsThePhonesOfAWordBetweenSilencesThatMayBeSkipped) {
    tokens.AddWord(0, 3, "sAA");
    Build();
    EXPECT_EQ(Phones(), "xsAAx");
    EXPECT_THAT(starts, ElementsAre(0, 3));
    EXPECT_THAT(ends, ElementsAre(8));
    EXPECT_EQ(Place(0), std::pair(1u, 3u));

    EXPECT_THAT(Arcs(0), ElementsAre(Pair(0, 0.75f)));
    EXPECT_THAT(Arcs(1), ElementsAre(Pair(0, 0.25f), Pair(1, 0.75f)));
    EXPECT_THAT(Arcs(2), ElementsAre(Pair(1, 0.25f), Pair(2, 0.75f)));
    EXPECT_THAT(Arcs(3), ElementsAre(Pair(3, 0.75f), Pair(2, 0.25f)));
    EXPECT_THAT(Arcs(6), ElementsAre(Pair(6, 0.75f), Pair(5, 0.25f)));
    EXPECT_THAT(Arcs(9), ElementsAre(Pair(9, 0.75f), Pair(8, 0.25f)));
    for (uint32_t n = 0; n < count; ++n) {
        EXPECT_EQ(graph[n]->state, n % 3);
    }
}

TEST_F(StateGraph, EntersAWordFromTheWordBeforeAndFromTheSilenceBetween) {
    tokens.AddWord(0, 1, "s");
    tokens.AddWord(2, 3, "t");
    Build();
    EXPECT_EQ(Phones(), "xsxtx");
    EXPECT_THAT(Arcs(6), ElementsAre(Pair(6, 0.75f), Pair(5, 0.25f)));
    EXPECT_THAT(Arcs(9), ElementsAre(Pair(9, 0.75f), Pair(5, 0.125f), Pair(8, 0.125f)));
    EXPECT_EQ(Place(1), std::pair(3u, 4u));
}

TEST_F(StateGraph, PassesThroughAPauseThatTheTextAsksFor) {
    tokens.AddWord(0, 1, "s");
    tokens.Add(kPunctuationToken, 1, 2, {{{"x"}}}, kPauseTokenFlag);
    tokens.AddWord(2, 3, "t");
    Build();
    EXPECT_EQ(Phones(), "xsxxxtx");
    EXPECT_THAT(Arcs(9), ElementsAre(Pair(9, 0.75f), Pair(5, 0.125f), Pair(8, 0.125f)));
    EXPECT_THAT(Arcs(15), ElementsAre(Pair(15, 0.75f), Pair(11, 0.125f), Pair(14, 0.125f)));
    EXPECT_THAT(starts, ElementsAre(0, 3));
    EXPECT_THAT(ends, ElementsAre(17));
}

TEST_F(StateGraph, BranchesForEachPronunciationAndJoinsThem) {
    tokens.Add(kWordToken, 0, 1, {{{"s", "tAA"}}, {{"AA"}}});
    Build();
    EXPECT_EQ(Phones(), "xstAAAAx");
    EXPECT_THAT(Arcs(3), ElementsAre(Pair(3, 0.75f), Pair(2, 0.25f)));
    EXPECT_THAT(Arcs(6), ElementsAre(Pair(6, 0.75f), Pair(2, 0.25f)));
    EXPECT_THAT(Arcs(12), ElementsAre(Pair(12, 0.75f), Pair(5, 0.125f), Pair(11, 0.125f)));
    EXPECT_THAT(starts, ElementsAre(0, 3, 6));
    EXPECT_THAT(ends, ElementsAre(14));

    tokens = {};
    starts.clear();
    ends.clear();
    tokens.Add(kWordToken, 0, 1, {{{"s", "s"}}});
    Build();
    EXPECT_EQ(Phones(), "xssx"); // equal branches share nothing
    EXPECT_THAT(ends, ElementsAre(5, 8));
}

TEST_F(StateGraph, PlacesSilentTokensAtTheNextSpokenOne) {
    tokens.AddCut(0);
    tokens.AddWord(0, 1, "s");
    tokens.Add(kTagToken, 1, 2, {});
    tokens.AddWord(2, 3, "t");
    tokens.Add(kTagToken, 3, 4, {});
    Build();
    EXPECT_THAT(starts, ElementsAre(0, 3));
    EXPECT_EQ(Place(0), std::pair(1u, 1u));
    EXPECT_EQ(Place(2), std::pair(3u, 3u));
    EXPECT_EQ(Place(4), std::pair(4u, 4u));
}

TEST_F(StateGraph, OfNoWordsIsTheFinalSilence) {
    Build();
    EXPECT_EQ(Phones(), "x");
    EXPECT_THAT(starts, ElementsAre(0));
    EXPECT_THAT(ends, IsEmpty());
}

TEST_F(StateGraph, SpeaksUnknownPhonemesAsSilence) {
    tokens.AddWord(0, 1, "s?t");
    Build();
    EXPECT_EQ(Phones(), "xsxtx");
    EXPECT_THAT(Arcs(9), ElementsAre(Pair(9, 0.75f), Pair(5, 0.125f), Pair(8, 0.125f)));
}

TEST_F(StateGraph, SkipsGroupsWithoutSpelling) {
    CTxMarker& word = tokens.Add(kWordToken, 0, 1, {{{}}, {{"s", "t"}}, {{"AA"}}});
    word.groups[1].alternatives[0] = nullptr;
    word.groups[2].alternatives[0] = nullptr;
    CTxMarker& broken = tokens.AddWord(1, 2, "s");
    broken.groups = nullptr;
    tokens.AddWord(2, 3, "s").group_count = -1;
    Build();
    EXPECT_EQ(Phones(), "xtx");
}

TEST_F(StateGraph, LetsLongTransitionsSkipStates) {
    model->models[2].states[0].transitions[2] = 0.125f;
    tokens.AddWord(0, 1, "s");
    Build();
    EXPECT_THAT(Arcs(5), ElementsAre(Pair(4, 0.25f), Pair(5, 0.75f)));
    model->hasLongTransitions = 1;
    starts.clear();
    Build();
    EXPECT_THAT(Arcs(5), ElementsAre(Pair(3, 0.125f), Pair(4, 0.25f), Pair(5, 0.75f)));
}

TEST_F(StateGraph, TakesSixtyThousandWaysIntoAPhone) {
    std::vector<std::string> alternatives(60010, "s");
    tokens.Add(kWordToken, 0, 1, {{alternatives}, {{"t"}}});
    Build();
    const uint32_t joint = 3 + 60010 * 3;
    EXPECT_EQ(graph[joint]->predecessors, 60001);
    EXPECT_EQ(graph[joint]->Arcs()[1].state, 5u);
    EXPECT_EQ(graph[joint]->Arcs()[60000].state, 3u + 59999 * 3 + 2);
    EXPECT_EQ(graph[joint]->Arcs()[1].probability, 0.25f / 60000);

    // Groups that need not say anything double the exits each time; that, too, ends.
    tokens = {};
    std::vector<token_list::group> doubling(64, {{"", ""}});
    tokens.Add(kWordToken, 0, 1, doubling);
    Build();
    EXPECT_EQ(Phones(), "xx");
    EXPECT_EQ(graph[3]->predecessors, 60001);
}

} // namespace
} // namespace tessarin::test
