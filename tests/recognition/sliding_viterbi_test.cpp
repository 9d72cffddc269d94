#include "recognition/sliding_viterbi.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "fixtures.h"
#include "literal_viterbi.h"

namespace tessarin::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Pair;

struct search_run {
    error_code code = kNoError;
    std::vector<uint32_t> path;
    double score = -1.0;
    TArray<float> energies;
};

void Search(search_run& run, const sliding_viterbi_options& options, const CAccousticHMM& model,
            const hand_graph& graph, IObservationStream& stream,
            const std::vector<uint32_t>& startStates = {0}, ProgressSink* progress = nullptr) {
    TArray<uint32_t> path;
    run.code = SlidingViterbi(options, model, graph.Get(), graph.Positions(), startStates, stream,
                              progress, &path, run.energies, &run.score);
    run.path.assign(path.begin(), path.end());
}

/// Random chains, with arcs that skip, probabilities that tie and likelihoods that vanish.
struct random_case {
    explicit random_case(uint32_t seed) : random(seed) {
        model = MakeLikelihoodModel({"x", "AA", "s", "t"});
        if (Below(3) == 0) {
            model->constraints = {0, Below(4), 0, 1 + Below(4)};
        }
        const uint32_t positions = 1 + Below(25);
        for (uint32_t n = 0; n < positions * 3; ++n) {
            if (n % 3 == 0) {
                phone = static_cast<uint8_t>(Below(4));
            }
            AddState(n);
        }
        const uint32_t frames = 1 + Below(Below(8) == 0 ? 260 : 40);
        for (uint32_t t = 0; t < frames; ++t) {
            std::vector<double> likelihoods(12);
            for (double& likelihood : likelihoods) {
                likelihood = OneOf({0.0, 0.5, 0.5, 1.0, 1e-40, 0.3});
            }
            stream.Add(likelihoods, static_cast<float>(t));
        }
        for (uint32_t i = 0; i <= Below(3); ++i) {
            startStates.push_back(Below(std::min(6u, positions * 3)));
        }
        options = {static_cast<uint16_t>(1 + Below(Below(2) == 0 ? 8 : 60)), Below(2) == 0};
    }

    void AddState(uint32_t n) {
        std::vector<state_arc> arcs;
        for (uint32_t i = 0; i < Below(3); ++i) {
            const uint32_t back = Below(8);
            arcs.push_back({n - std::min(n, back), OneOf({0.0, 0.25, 0.5, 1.0, 0.7})});
        }
        if (Below(4) != 0) {
            arcs.push_back({n, OneOf({0.25, 0.5, 0.9})});
        }
        if (n > 0 && Below(6) != 0) {
            arcs.insert(arcs.begin(), {n - 1, 0.5f});
        }
        graph.Add(phone, static_cast<uint8_t>(n % 3), arcs);
    }
    uint32_t Below(uint32_t bound) { return static_cast<uint32_t>(random() % bound); }
    float OneOf(const std::vector<double>& values) {
        return static_cast<float>(values[Below(static_cast<uint32_t>(values.size()))]);
    }

    std::mt19937 random;
    std::unique_ptr<CAccousticHMM> model;
    hand_graph graph;
    uint8_t phone = 0;
    list_stream stream;
    std::vector<uint32_t> startStates;
    sliding_viterbi_options options{};
};

TEST(SlidingViterbi, EqualsTheLiteralSearch) {
    int lost = 0;
    int whole = 0;
    int cancelled = 0;
    for (uint32_t seed = 0; seed < 3000; ++seed) {
        SCOPED_TRACE(seed);
        random_case each(seed);
        const bool hasSink = seed % 3 != 0;
        const size_t cancelAt = seed % 7;
        recording_sink sink(cancelAt);
        recording_sink literalSink(cancelAt);
        const literal_result expected =
            LiteralViterbi(each.options.beamWidth, each.options.slideOnLoss, *each.model,
                           each.graph.Get(), each.graph.Positions(), each.startStates, each.stream,
                           hasSink ? &literalSink : nullptr);
        each.stream.next = 0;
        search_run run;
        Search(run, each.options, *each.model, each.graph, each.stream, each.startStates,
               hasSink ? &sink : nullptr);
        ASSERT_EQ(run.code, expected.code);
        ASSERT_EQ(run.path, expected.path);
        ASSERT_EQ(sink.calls, literalSink.calls);
        if (!run.path.empty()) {
            ASSERT_EQ(run.score, expected.score);
        }
        lost += run.code == kRecognitionFailed && !run.path.empty();
        whole += run.code == kNoError;
        cancelled += run.code == kUserCancelled;
    }
    EXPECT_GT(lost, 300);
    EXPECT_GT(whole, 150);
    EXPECT_GT(cancelled, 30);
}

/// The best product over all paths from state 0 to the last state, by trying every path.
double BestByForce(const CAccousticHMM& model, const hand_graph& graph, const list_stream& stream,
                   size_t t, uint32_t state) {
    const state_rec& record = *graph.records[state];
    if (t == 0) {
        return state != 0
                   ? 0.0
                   : model.GetStateProbability(stream.observations[0].data(), record.phone * 3);
    }
    double best = 0.0;
    for (int i = 0; i < record.predecessors; ++i) {
        const state_arc arc = record.Arcs()[i];
        best = std::max(best, double{arc.probability} *
                                  BestByForce(model, graph, stream, t - 1, arc.state));
    }
    return best * model.GetStateProbability(stream.observations[t].data(),
                                            record.phone * 3 + record.state);
}

double PathProduct(const CAccousticHMM& model, const hand_graph& graph, const list_stream& stream,
                   const std::vector<uint32_t>& path) {
    double product = 1.0;
    for (size_t t = 0; t < path.size(); ++t) {
        const state_rec& record = *graph.records[path[t]];
        if (t > 0) {
            double arcProbability = 0.0;
            for (int i = 0; i < record.predecessors; ++i) {
                if (record.Arcs()[i].state == path[t - 1]) {
                    arcProbability = std::max(arcProbability, double{record.Arcs()[i].probability});
                }
            }
            product *= arcProbability;
        }
        product *= model.GetStateProbability(stream.observations[t].data(),
                                             record.phone * 3 + record.state);
    }
    return product;
}

TEST(SlidingViterbi, FindsTheBestOfAllPaths) {
    const auto model = MakeLikelihoodModel({"x", "AA", "s"});
    std::mt19937 random(5);
    std::uniform_real_distribution<double> likelihood(0.05, 1.0);
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        hand_graph graph;
        graph.AddChain({1, 2, 1}, 0.4f);
        list_stream stream;
        for (int t = 0; t < 12; ++t) {
            std::vector<double> likelihoods(9);
            std::generate(likelihoods.begin(), likelihoods.end(),
                          [&] { return likelihood(random); });
            stream.Add(likelihoods);
        }
        search_run run;
        Search(run, {100, false}, *model, graph, stream);
        ASSERT_EQ(run.code, kNoError);
        const double best = BestByForce(*model, graph, stream, 11, 8);
        EXPECT_NEAR(PathProduct(*model, graph, stream, run.path) / best, 1.0, 1e-9);
    }
}

TEST(SlidingViterbi, PathsNeverRunBackward) {
    for (uint32_t seed = 0; seed < 500; ++seed) {
        SCOPED_TRACE(seed);
        random_case each(seed);
        search_run run;
        Search(run, each.options, *each.model, each.graph, each.stream, each.startStates);
        EXPECT_TRUE(run.code == kNoError || run.code == kRecognitionFailed);
        if (run.code == kNoError) {
            EXPECT_TRUE(std::is_sorted(run.path.begin(), run.path.end()));
        }
        for (const uint32_t state : run.path) {
            ASSERT_LT(state, each.graph.records.size());
        }
    }
}

class ThreePhones : public testing::Test {
protected:
    ThreePhones() { graph.AddChain({1, 2}); }

    std::unique_ptr<CAccousticHMM> model = MakeLikelihoodModel({"x", "AA", "s"});
    hand_graph graph; // AA s
    list_stream stream;
    search_run run;
};

TEST_F(ThreePhones, FollowTheLikelyStates) {
    for (const size_t state : {3u, 3u, 4u, 5u, 5u, 6u, 7u, 8u}) {
        stream.AddOnly(state, 9, 1, static_cast<float>(state));
    }
    Search(run, {500, false}, *model, graph, stream);
    EXPECT_EQ(run.code, kNoError);
    EXPECT_THAT(run.path, ElementsAre(0, 0, 1, 2, 2, 3, 4, 5));
    EXPECT_EQ(run.score, 1.0);
    EXPECT_THAT(std::vector<float>(run.energies.begin(), run.energies.end()),
                ElementsAre(3, 3, 4, 5, 5, 6, 7, 8));
}

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

TEST_F(ThreePhones, TakeTheLastOfEqualScoresWhenTheChainIsNotFinished) {
    stream.AddOnly(3, 9, 1, 0, 1.0);
    stream.AddOnly(3, 9, 1, 0, 1.0);
    stream.AddOnly(3, 9, 1, 0, 1.0); // 0 0 0 and 0 0 1 and 0 1 1 and 0 1 2 are all the same
    Search(run, {500, false}, *model, graph, stream);
    EXPECT_EQ(run.code, kRecognitionFailed);
    EXPECT_THAT(run.path, ElementsAre(0, 0, 1));
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

TEST_F(ThreePhones, HaveNoPathWhenLostAtOnce) {
    stream.AddOnly(3, 9, 1);
    stream.Add(std::vector<double>(9, 0.0));
    stream.AddOnly(3, 9, 3);
    for (const bool slide : {false, true}) {
        stream.next = 0;
        Search(run, {500, slide}, *model, graph, stream);
        EXPECT_EQ(run.code, kRecognitionFailed);
        EXPECT_TRUE(run.path.empty());
    }
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
}

TEST_F(ThreePhones, LetTheHostEndASearchThatStaysLost) {
    stream.AddOnly(3, 9, 101);
    stream.Add(std::vector<double>(9, 0.0)); // observation 101, reported as 100
    recording_sink sink(5);
    Search(run, {500, true}, *model, graph, stream, {0}, &sink);
    EXPECT_EQ(run.code, kUserCancelled);
    EXPECT_THAT(sink.calls, Each(Pair(100, 102)));
}

TEST(SlidingViterbi, SlidesPastWhatItCannotReach) {
    // A window of 6 states over 4 phones: states 0 to 2 die, and a sliding window finds its way on
    // only where live states stay inside.
    const auto model = MakeLikelihoodModel({"x", "AA", "s"});
    hand_graph graph;
    graph.AddChain({1, 2, 1, 2});
    graph.Add(1, 0, {{4, 0.5f}, {12, 0.5f}});
    graph.Add(1, 1, {{12, 0.5f}, {13, 0.5f}});
    graph.Add(1, 2, {{13, 0.5f}, {14, 0.5f}});
    list_stream stream;
    stream.AddOnly(3, 9, 1, 0, 0.1);
    stream.AddOnly(4, 9, 1, 0, 0.1);
    for (const size_t state : {5u, 6u, 7u, 3u, 3u, 4u, 5u}) {
        stream.AddOnly(state, 9, 1);
    }
    search_run run;
    Search(run, {6, false}, *model, graph, stream);
    EXPECT_EQ(run.code, kRecognitionFailed);
    stream.next = 0;
    search_run sliding;
    Search(sliding, {16, true}, *model, graph, stream);
    EXPECT_EQ(sliding.code, kNoError);
    EXPECT_EQ(sliding.path.back(), 14u);
}

TEST(SlidingViterbi, PrefersTheEarliestArcOfEquals) {
    const auto model = MakeLikelihoodModel({"x", "AA", "s"});
    for (const bool silenceFirst : {false, true}) {
        SCOPED_TRACE(silenceFirst);
        hand_graph graph;
        graph.AddChain({1, 1});
        graph.records[3] = graph.records[0]; // two equal branches, both started
        std::vector<state_arc> arcs = {{6, 0.5f}, {2, 0.25f}, {5, 0.25f}};
        if (silenceFirst) {
            std::swap(arcs[1], arcs[2]);
        }
        hand_graph branches;
        for (uint32_t base : {0u, 3u}) {
            branches.Add(1, 0, {{base, 0.5f}});
            branches.Add(1, 1, {{base, 0.5f}, {base + 1, 0.5f}});
            branches.Add(1, 2, {{base + 1, 0.5f}, {base + 2, 0.5f}});
        }
        branches.Add(2, 0, arcs);
        branches.Add(2, 1, {{6, 0.5f}, {7, 0.5f}});
        branches.Add(2, 2, {{7, 0.5f}, {8, 0.5f}});
        list_stream stream;
        for (const size_t state : {3u, 4u, 5u, 6u, 7u, 8u}) {
            stream.AddOnly(state, 9, 1);
        }
        search_run run;
        Search(run, {500, false}, *model, branches, stream, {0, 3});
        EXPECT_EQ(run.code, kNoError);
        const uint32_t base = silenceFirst ? 3 : 0;
        EXPECT_THAT(run.path, ElementsAre(base, base + 1, base + 2, 6, 7, 8));
    }
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

TEST(SlidingViterbi, EndsInTheLastWordRatherThanInAWorseSilence) {
    const auto model = MakeLikelihoodModel({"x", "AA", "s"});
    hand_graph graph;
    graph.AddChain({1, 0});
    list_stream stream;
    for (const size_t state : {3u, 4u, 5u, 5u, 5u}) {
        stream.AddOnly(state, 9, 1, 0, 0.01);
    }
    stream.AddOnly(5, 9, 1, 0, 0.01);
    search_run run;
    Search(run, {500, false}, *model, graph, stream);
    EXPECT_EQ(run.code, kNoError);
    EXPECT_THAT(run.path, ElementsAre(0, 1, 2, 2, 2, 2));
    EXPECT_EQ(run.score, 1.0);
}

TEST(SlidingViterbi, PaysOnlyForSelfLoopsPastTheLimit) {
    // With a limit of 3 a state is left rather than stayed in, even for an unlikely one.
    const auto model = MakeLikelihoodModel({"x", "AA", "s"});
    hand_graph graph;
    graph.AddChain({1, 2});
    list_stream stream;
    stream.AddOnly(3, 9, 8, 0, 1e-4);
    for (const size_t state : {4u, 5u, 6u, 7u, 8u}) {
        stream.AddOnly(state, 9, 1, 0, 1e-4);
    }
    search_run unlimited;
    Search(unlimited, {500, false}, *model, graph, stream);
    EXPECT_EQ(std::count(unlimited.path.begin(), unlimited.path.end(), 0u), 8);

    model->constraints = {0, 3, 0};
    stream.next = 0;
    search_run limited;
    Search(limited, {500, false}, *model, graph, stream);
    EXPECT_EQ(limited.code, kNoError);
    EXPECT_LT(std::count(limited.path.begin(), limited.path.end(), 0u), 8);
}

} // namespace
} // namespace tessarin::test
