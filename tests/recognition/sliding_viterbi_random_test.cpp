#include "recognition/aligner/sliding_viterbi.h"

#include <algorithm>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "literal_viterbi.h"
#include "sliding_search_run.h"

namespace tessarin::test {
namespace {

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
    int lost = 0;
    for (uint32_t seed = 0; seed < 3000; ++seed) {
        SCOPED_TRACE(seed);
        random_case each(seed);
        search_run run;
        Search(run, each.options, *each.model, each.graph, each.stream, each.startStates);
        EXPECT_TRUE(run.code == kNoError || run.code == kRecognitionFailed);
        EXPECT_TRUE(std::is_sorted(run.path.begin(), run.path.end()));
        if (!run.path.empty()) {
            EXPECT_LT(run.path.back(), each.graph.records.size());
        }
        lost += run.code == kRecognitionFailed && !run.path.empty();
    }
    EXPECT_GT(lost, 300);
}

} // namespace
} // namespace tessarin::test
