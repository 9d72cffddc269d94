#include "recognition/sentences/word_spans.h"

#include <string>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>

#include "base/quib_allocator.h"
#include "fixtures.h"
#include "recognition/graph/forward_graph.h"
#include "recognition/graph/log_state_graph.h"
#include "recognition/graph/phone_durations.h"
#include "recognition/graph/state_graph.h"

namespace tessarin::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The graphs of what a transcriber says.
struct spoken_graphs {
    explicit spoken_graphs(ready_transcriber& transcriber) {
        std::vector<uint32_t> starts;
        std::vector<uint32_t> ends;
        state_graph_builder builder(*model, pool);
        builder.AddMarkers(transcriber.tokens.markers, true, starts, ends);
        graph = log_state_graph::FromProbabilities(builder.CopyGraph(), builder.StateCount());
        forward = forward_graph::FromLogGraph(graph, pool);
        spans = BuildWordSpans(transcriber.tokens.markers, transcriber, forward, graph, *model,
                               durations);
    }

    std::unique_ptr<CAccousticHMM> model = MakeLikelihoodModel({"x", "AA", "s", "t"});
    quib_allocator pool{32768};
    log_state_graph graph;
    forward_graph forward;
    phone_durations durations;
    std::vector<word_span> spans;
};

TEST(ForwardGraph, LeadsWhereTheGraphComesFrom) {
    ready_transcriber transcriber;
    transcriber.tokens.Add(kWordToken, 0, 1, {{{"s", "AAt"}}});
    transcriber.tokens.AddWord(2, 3, "t");
    const spoken_graphs graphs(transcriber);
    using edge = std::tuple<uint32_t, uint32_t, uint32_t, float>; // from, to, acoustic state, log
    std::vector<edge> backward;
    for (uint32_t n = 0; n < graphs.graph.GetNumStates(); ++n) {
        const state_rec& record = graphs.graph[n];
        for (uint16_t i = 0; i < record.predecessors; ++i) {
            const state_arc& arc = record.Arcs()[i];
            backward.emplace_back(arc.state, n, record.phone * 3 + record.state, arc.probability);
        }
    }
    std::stable_sort(backward.begin(), backward.end(),
                     [](const edge& a, const edge& b) { return std::get<0>(a) < std::get<0>(b); });
    std::vector<edge> forward;
    for (uint32_t n = 0; n < graphs.forward.GetNumStates(); ++n) {
        const forward_rec& record = graphs.forward[n];
        EXPECT_EQ(record.acousticState, graphs.graph[n].phone * 3 + graphs.graph[n].state);
        for (uint32_t i = 0; i < record.edges; ++i) {
            const forward_edge& out = record.Edges()[i];
            forward.emplace_back(n, out.state, out.acousticState, out.logProbability);
        }
    }
    EXPECT_EQ(forward, backward);
}

TEST(WordSpans, AreTheSentencesOfTheText) {
    ready_transcriber transcriber;
    transcriber.transcribed = "a b, c. d!? e";
    token_list& tokens = transcriber.tokens;
    tokens.AddCut(0); // Kept: counts as a word
    tokens.AddWord(0, 1, "s");
    tokens.AddWord(2, 3, "AAt");
    tokens.Add(kPunctuationToken, 3, 4, {{{"x"}}}); // Kept: a comma does not end a sentence
    tokens.AddWord(5, 6, "t");
    tokens.Add(kPunctuationToken, 6, 7, {});
    tokens.Add(kTagToken, 7, 7, {});
    tokens.AddWord(8, 9, "s");
    tokens.Add(kPunctuationToken, 9, 10, {});
    tokens.Add(kPunctuationToken, 10, 11, {});
    tokens.AddWord(12, 13, "s");
    const spoken_graphs graphs(transcriber);
    ASSERT_EQ(graphs.spans.size(), 3u);
    const auto at = [&](size_t i) { return &tokens.markers[i]; };
    EXPECT_EQ(graphs.spans[0].first, at(0));
    EXPECT_EQ(graphs.spans[0].last, at(4));
    EXPECT_EQ(graphs.spans[1].first, at(7));
    EXPECT_EQ(graphs.spans[1].last, at(7));
    EXPECT_EQ(graphs.spans[2].first, at(10));
    EXPECT_EQ(graphs.spans[2].last, at(10));
    EXPECT_EQ(graphs.spans[0].firstState, 3u); // after the silence
    EXPECT_EQ(graphs.spans[0].expectedFrames, (90u + 160 + 90 + 90) / 10);
    EXPECT_EQ(graphs.spans[2].lastState, graphs.graph.GetNumStates() - 3);
}

TEST(WordSpans, KnowTheirWaysInAndOut) {
    ready_transcriber transcriber;
    transcriber.transcribed = "a. b";
    transcriber.tokens.Add(kWordToken, 0, 1, {{{"s", "AAt"}}});
    transcriber.tokens.Add(kPunctuationToken, 1, 2, {});
    transcriber.tokens.AddWord(3, 4, "t");
    // Silence 0-2, s 3-5, AA 6-8, t 9-11, silence 12-14, t 15-17, silence 18-20.
    const spoken_graphs graphs(transcriber);
    ASSERT_EQ(graphs.spans.size(), 2u);
    const word_span& first = graphs.spans[0];
    EXPECT_THAT(first.entryStates, ElementsAre(3, 6));
    EXPECT_EQ(first.lastState, 12u);
    EXPECT_THAT(first.exitStates, ElementsAre(5, 11, 14));
    EXPECT_TRUE(first.IsEntry(6));
    EXPECT_TRUE(first.IsExit(11));
    EXPECT_FALSE(first.IsExit(12)) << "with several ways out the next state is none";
    const word_span& second = graphs.spans[1];
    EXPECT_EQ(second.firstState, 15u);
    EXPECT_THAT(second.entryStates, IsEmpty());
    EXPECT_THAT(second.exitStates, IsEmpty());
    EXPECT_TRUE(second.IsEntry(15));
    EXPECT_FALSE(second.IsEntry(12));
    EXPECT_TRUE(second.IsExit(18));
    EXPECT_FALSE(second.IsExit(17));
}

TEST(WordSpans, TakeTextsWithoutPhonemes) {
    ready_transcriber transcriber;
    EXPECT_THAT(spoken_graphs(transcriber).spans, IsEmpty());
    transcriber.tokens.Add(kWordToken, 0, 1, {});
    const spoken_graphs graphs(transcriber);
    ASSERT_EQ(graphs.spans.size(), 1u);
    EXPECT_EQ(graphs.spans[0].firstState, 0u);
    EXPECT_EQ(graphs.spans[0].lastState, 0u);
}

} // namespace
} // namespace tessarin::test
