#include "recognition/aligner/sliding_viterbi.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sliding_search_run.h"

namespace tessarin::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Pair;

class ThreePhones : public testing::Test {
protected:
    ThreePhones() { graph.AddChain({1, 2}); }

    std::unique_ptr<CAccousticHMM> model = MakeLikelihoodModel({"x", "AA", "s"});
    hand_graph graph; // AA s
    list_stream stream;
    search_run run;
};

TEST_F(ThreePhones, AreScoredAtTheStartByTheirPhonesFirstState) {
    stream.AddOnly(3, 9, 1); // only the first state of AA is likely
    stream.AddOnly(5, 9, 1);
    stream.AddOnly(6, 9, 1);
    stream.AddOnly(7, 9, 1);
    stream.AddOnly(8, 9, 1);
    Search(run, {500, false}, *model, graph, stream, {2, 2, 99});
    EXPECT_EQ(run.code, kNoError);
    EXPECT_THAT(run.path, ElementsAre(2, 2, 3, 4, 5));
}

TEST_F(ThreePhones, EndInThePredecessorOfTheBestWhenTheChainIsNotFinished) {
    for (const size_t state : {3u, 4u, 5u, 6u}) {
        stream.AddOnly(state, 9, 1);
    }
    Search(run, {500, false}, *model, graph, stream);
    EXPECT_EQ(run.code, kRecognitionFailed);
    // State 3 is the best at the end; the path ends in the state before it, and goes its way back.
    EXPECT_THAT(run.path, ElementsAre(0, 1, 2, 2));
}

TEST_F(ThreePhones, GiveUpTheLastTwoObservationsWhenThePathIsLost) {
    for (const size_t state : {3u, 4u, 5u, 6u, 7u, 7u}) {
        stream.AddOnly(state, 9, 1);
    }
    stream.Add(std::vector<double>(9, 0.0));
    stream.AddOnly(7, 9, 5);
    Search(run, {500, false}, *model, graph, stream);
    EXPECT_EQ(run.code, kRecognitionFailed);
    EXPECT_EQ(run.path.size(), 5u); // lost at observation 6
    EXPECT_THAT(std::vector<uint32_t>(run.path.begin(), run.path.begin() + 4),
                Each(testing::Le(5u)));
    EXPECT_EQ(stream.next, 7u);
}

TEST_F(ThreePhones, ReachNoEndInOneObservation) {
    stream.AddOnly(3, 9, 1);
    Search(run, {500, false}, *model, graph, stream);
    EXPECT_EQ(run.code, kRecognitionFailed);
    EXPECT_THAT(run.path, ElementsAre(0));
    Search(run, {500, false}, *model, graph, *std::make_unique<list_stream>());
    EXPECT_EQ(run.code, kRecognitionFailed);
    EXPECT_TRUE(run.path.empty());
}

TEST_F(ThreePhones, PassOnAFailedRead) {
    stream.AddOnly(3, 9, 20);
    for (const size_t failAt : {0u, 7u}) {
        stream.next = 0;
        stream.failAt = failAt;
        Search(run, {500, false}, *model, graph, stream);
        EXPECT_EQ(run.code, kFileNotFound);
        EXPECT_TRUE(run.path.empty());
    }
}

TEST_F(ThreePhones, CannotHaveMoreObservationsThanFit) {
    class endless_stream : public list_stream {
    public:
        uint32_t GetNumObservations() override { return UINT32_MAX; }
    } endless;
    endless.AddOnly(3, 9, 5);
    Search(run, {500, false}, *model, graph, endless);
    EXPECT_EQ(run.code, kOutOfMemory);
}

TEST_F(ThreePhones, ReportEveryHundredthObservationAndStopWhenAsked) {
    stream.AddOnly(3, 9, 350, 0, 0.5);
    recording_sink sink;
    Search(run, {500, false}, *model, graph, stream, {0}, &sink);
    EXPECT_THAT(sink.calls, ElementsAre(Pair(100, 350), Pair(200, 350), Pair(300, 350)));

    recording_sink cancelling(1);
    stream.next = 0;
    Search(run, {500, false}, *model, graph, stream, {0}, &cancelling);
    EXPECT_EQ(run.code, kUserCancelled);
    EXPECT_TRUE(run.path.empty());
    EXPECT_EQ(stream.next, 201u);
    stream.next = 0;
    stream.slowAt = 42;
    Search(run, {500, false}, *model, graph, stream, {0}, &cancelling);
    EXPECT_EQ(run.code, kUserCancelled);
    EXPECT_EQ(stream.next, 43u) << "at half a second";
}

TEST_F(ThreePhones, LetTheHostEndASearchThatStaysLost) {
    stream.AddOnly(3, 9, 101);
    stream.Add(std::vector<double>(9, 0.0)); // observation 101, reported as 100
    recording_sink sink(5);
    Search(run, {500, true}, *model, graph, stream, {0}, &sink);
    EXPECT_EQ(run.code, kUserCancelled);
    EXPECT_THAT(sink.calls, Each(Pair(100, 102)));
}

TEST(SlidingViterbi, FollowsArcsBeyondTheFirstHundreds) {
    // The last of 400 ways into the final phone is the only likely one.
    const auto model = MakeLikelihoodModel({"x", "AA", "s"});
    constexpr uint32_t kBranches = 400;
    hand_graph graph;
    std::vector<uint32_t> starts;
    std::vector<state_arc> arcs = {{kBranches * 3, 0.5f}};
    for (uint32_t b = 0; b < kBranches; ++b) {
        const uint32_t base = b * 3;
        starts.push_back(base);
        graph.Add(1, 0, {{base, 0.5f}});
        graph.Add(1, 1, {{base, 0.5f}, {base + 1, 0.5f}});
        graph.Add(1, 2, {{base + 1, 0.5f}, {base + 2, 0.5f}});
        arcs.push_back({base + 2, b + 1 == kBranches ? 0.5f : 0.25f});
    }
    graph.Add(2, 0, arcs);
    graph.Add(2, 1, {{kBranches * 3, 0.5f}, {kBranches * 3 + 1, 0.5f}});
    graph.Add(2, 2, {{kBranches * 3 + 1, 0.5f}, {kBranches * 3 + 2, 0.5f}});
    list_stream stream;
    for (const size_t state : {3u, 4u, 5u, 6u, 7u, 8u}) {
        stream.AddOnly(state, 9, 1);
    }
    search_run run;
    Search(run, {8000, false}, *model, graph, stream, starts);
    EXPECT_EQ(run.code, kNoError);
    EXPECT_THAT(run.path, ElementsAre(1197, 1198, 1199, 1200, 1201, 1202));
}

} // namespace
} // namespace tessarin::test
