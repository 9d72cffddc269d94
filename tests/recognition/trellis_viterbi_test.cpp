#include "recognition/trellis/trellis_viterbi.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <random>

#include "fixtures.h"
#include "literal_trellis.h"
#include "recognition/aligner/sliding_viterbi.h"
#include "support/temp_file.h"

namespace tessarin::test {
namespace {

using testing::ElementsAre;

constexpr uint32_t kAllInMemory = 500000000;

struct search_run {
    error_code code = kNoError;
    std::vector<uint32_t> path;
    double score = -1.0;
};

struct search_settings {
    uint16_t beamWidth = 8000;
    uint16_t kept = 8000;
    double logBeam = -1e12;
    uint32_t memory = kAllInMemory;
    std::string file;
};

search_run Search(const search_settings& settings, const CAccousticHMM& model,
                  const log_state_graph& graph, const std::vector<uint32_t>& startStates,
                  list_stream& stream, ProgressSink* progress = nullptr) {
    stream.next = 0;
    search_run run;
    TArray<uint32_t> path;
    TArray<float> energies;
    const trellis_viterbi_options options{settings.beamWidth, settings.kept, settings.memory,
                                          settings.logBeam, settings.file};
    run.code = TrellisViterbi(options, model, graph, startStates, stream, progress, &path, energies,
                              &run.score);
    run.path.assign(path.begin(), path.end());
    return run;
}

log_state_graph InLogs(const hand_graph& graph) {
    return log_state_graph::FromProbabilities(graph.records.data(),
                                              static_cast<uint32_t>(graph.records.size()));
}

/// Random chains with skips. `coarse` ones have ties and likelihoods of 0.
struct random_case {
    random_case(uint32_t seed, bool coarse) : random(seed) {
        model = MakeLikelihoodModel({"x", "AA", "s", "t"});
        if (Below(3) == 0) {
            model->constraints = {0, Below(4), 0, 1 + Below(4)};
        }
        const uint32_t states = 3 * (1 + Below(20));
        uint8_t phone = 0;
        for (uint32_t n = 0; n < states; ++n) {
            phone = n % 3 == 0 ? static_cast<uint8_t>(Below(4)) : phone;
            std::vector<state_arc> arcs = {{n, Probability(coarse)}};
            if (n > 0) {
                arcs.push_back({n - 1, Probability(coarse)});
            }
            if (n > 3 && Below(3) == 0) {
                arcs.push_back({n - 2 - Below(2), Probability(coarse)});
            }
            graph.Add(phone, static_cast<uint8_t>(n % 3), arcs);
        }
        const uint32_t frames = 1 + Below(60);
        for (uint32_t t = 0; t < frames; ++t) {
            std::vector<double> likelihoods(12);
            for (double& likelihood : likelihoods) {
                likelihood =
                    coarse && Below(4) == 0 ? 0.0 : static_cast<double>(Probability(coarse));
            }
            stream.Add(likelihoods);
        }
        startStates = {Below(std::min(4u, states))};
    }

    uint32_t Below(uint32_t bound) { return static_cast<uint32_t>(random() % bound); }
    float Probability(bool coarse) {
        return coarse ? 0.25f * static_cast<float>(1 + Below(4))
                      : std::uniform_real_distribution<float>(0.05f, 1.0f)(random);
    }

    std::mt19937 random;
    std::unique_ptr<CAccousticHMM> model;
    hand_graph graph;
    list_stream stream;
    std::vector<uint32_t> startStates;
};

TEST(TrellisViterbi, FindsThePathOfTheSearchThatMultiplies) {
    int whole = 0;
    for (uint32_t seed = 0; seed < 400; ++seed) {
        SCOPED_TRACE(seed);
        random_case each(seed, false);
        TArray<uint32_t> path;
        TArray<float> energies;
        double score = 0.0;
        const error_code plain =
            SlidingViterbi({8000, false}, *each.model, each.graph.Get(), each.graph.Positions(),
                           each.startStates, each.stream, nullptr, &path, energies, &score);
        if (plain != kNoError || path.GetSize() < 2) {
            continue;
        }
        ++whole;
        const log_state_graph graph = InLogs(each.graph);
        const search_run run = Search({}, *each.model, graph, each.startStates, each.stream);
        EXPECT_EQ(run.code, kNoError);
        EXPECT_EQ(run.path, std::vector<uint32_t>(path.begin(), path.end()));
    }
    EXPECT_GT(whole, 100);
}

TEST(TrellisViterbi, EqualsTheLiteralSearchInMemoryAndOnDisk) {
    int lost = 0;
    int whole = 0;
    for (uint32_t seed = 0; seed < 1500; ++seed) {
        SCOPED_TRACE(seed);
        random_case each(seed, true);
        const log_state_graph graph = InLogs(each.graph);
        search_settings settings;
        settings.beamWidth = static_cast<uint16_t>(1 + each.Below(each.Below(2) == 0 ? 8 : 60));
        settings.kept = static_cast<uint16_t>(1 + each.Below(each.Below(2) == 0 ? 3 : 30));
        settings.logBeam = each.Below(2) == 0 ? -2.0 : -1e12;
        each.stream.next = 0;
        const literal_result expected =
            LiteralTrellis(settings.beamWidth, settings.kept, settings.logBeam, *each.model, graph,
                           each.startStates, each.stream);
        for (const uint32_t memory : {kAllInMemory, 0u, 200u}) {
            settings.memory = memory;
            const search_run run =
                Search(settings, *each.model, graph, each.startStates, each.stream);
            ASSERT_EQ(run.code, expected.code) << memory;
            ASSERT_EQ(run.path, expected.path) << memory;
            if (!run.path.empty()) {
                ASSERT_EQ(run.score, expected.score) << memory;
            }
        }
        lost += expected.code == kRecognitionFailed && !expected.path.empty();
        whole += expected.code == kNoError;
    }
    EXPECT_GT(lost, 200);
    EXPECT_GT(whole, 40);
}

/// Ten phones of which each is likely in turn, twenty observations long.
struct spoken_chain {
    spoken_chain() {
        model = MakeLikelihoodModel({"x", "AA", "s", "t"});
        graph.AddChain({1, 2, 3, 1, 2, 3, 1, 2, 3, 1});
        for (const size_t phone : {1, 2, 3, 1, 2, 3, 1, 2, 3, 1}) {
            for (size_t state = 0; state < 3; ++state) {
                stream.AddOnly(phone * 3 + state, 12, 20, 0.0f, 1e-3);
            }
        }
        logs = InLogs(graph);
    }

    std::unique_ptr<CAccousticHMM> model;
    hand_graph graph;
    list_stream stream;
    log_state_graph logs;
};

// Kept: hosts compare commands by this score; the number of observations weighs in it.
TEST(TrellisViterbi, ScoreIsALogarithmOverTheWholePath) {
    auto model = MakeLikelihoodModel({"x", "AA"});
    hand_graph graph;
    graph.AddChain({1});
    list_stream stream;
    for (size_t state = 3; state < 6; ++state) {
        stream.AddOnly(state, 6, 1, 0.0f, 0.01);
    }
    const search_run run = Search({}, *model, InLogs(graph), {0}, stream);
    EXPECT_EQ(run.code, kNoError);
    EXPECT_THAT(run.path, ElementsAre(0, 1, 2));
    EXPECT_NEAR(run.score, std::log(3.0) + 2 * std::log(0.5), 1e-6);
}

/// States that lead to themselves only, so that a path ends in the last if it has lived all along.
struct states_apart : hand_graph {
    explicit states_apart(uint8_t count) {
        for (uint8_t n = 0; n < count; ++n) {
            Add(1 + n / 3, n % 3, {{n, 0.5f}}); // phone 0 is silence
        }
    }
};

TEST(TrellisViterbi, KeepsAQuarterOfTheWindowUnlessTold) {
    const auto model = MakeLikelihoodModel({"x", "AA", "s", "t"});
    const states_apart apart(8);
    const log_state_graph graph = InLogs(apart);
    for (const auto& [numBetter, kept, code] :
         {std::tuple{1, 0, kNoError}, {2, 0, kRecognitionFailed}, {2, 3, kNoError}}) {
        SCOPED_TRACE(testing::Message() << numBetter << ' ' << kept);
        std::vector<double> likelihoods(12, 0.1);
        likelihoods[3 + 7] = 0.5;
        std::fill_n(likelihoods.begin() + 3, numBetter, 1.0);
        list_stream stream;
        stream.Add(std::vector<double>(12, 1.0)); // all begin alike
        for (int t = 0; t < 3; ++t) {
            stream.Add(likelihoods);
        }
        search_settings settings;
        settings.kept = static_cast<uint16_t>(kept);
        EXPECT_EQ(Search(settings, *model, graph, {0, 1, 2, 3, 4, 5, 6, 7}, stream).code, code);
    }
}

TEST(TrellisViterbi, PrunesTenThousandBelowTheBestUnlessTold) {
    const auto model = MakeLikelihoodModel({"x", "AA", "s", "t"});
    const states_apart apart(2);
    const log_state_graph graph = InLogs(apart);
    const double perObservation = -std::log(1e-12);
    for (const auto& [logBeam, survives] : {std::pair{0.0, 10000.0}, {-5000.0, 5000.0}}) {
        SCOPED_TRACE(logBeam);
        search_settings settings;
        settings.logBeam = logBeam;
        const int last = static_cast<int>(survives / perObservation);
        for (const auto& [frames, code] :
             {std::pair{last, kNoError}, {last + 2, kRecognitionFailed}}) {
            list_stream stream;
            stream.AddOnly(3, 12, 1, 0.0f, 1.0); // both begin alike
            stream.AddOnly(3, 12, frames, 0.0f, 1e-12);
            EXPECT_EQ(Search(settings, *model, graph, {0, 1}, stream).code, code) << frames;
        }
    }
}

TEST(TrellisViterbi, NamesWhatItCannotDo) {
    spoken_chain chain;
    const auto code = [&](const search_settings& settings) {
        return Search(settings, *chain.model, chain.logs, {0}, chain.stream).code;
    };
    const TempFile folder(".folder");
    search_settings settings;
    settings.file = std::string(folder.Path()) + "/none/trellis";
    EXPECT_EQ(code(settings), kFileInUse);
    std::filesystem::create_directory(folder.Path());
    settings.file = folder.Path();
    EXPECT_EQ(code(settings), kFileInUse) << "a folder";

    list_stream silence;
    EXPECT_EQ(Search({}, *chain.model, chain.logs, {0}, silence).code, kBrokenPath);
    EXPECT_EQ(Search({}, *chain.model, log_state_graph(), {0}, chain.stream).code,
              kRecognitionFailed);
    EXPECT_EQ(Search({}, *chain.model, chain.logs, {}, chain.stream).code, kBrokenPath);
    recording_sink sink(2);
    EXPECT_EQ(Search({}, *chain.model, chain.logs, {0}, chain.stream, &sink).code, kUserCancelled);
    EXPECT_EQ(sink.calls.size(), 3u);
    EXPECT_EQ(sink.calls[1].first, 200u);
    chain.stream.slowAt = 42;
    EXPECT_EQ(Search({}, *chain.model, chain.logs, {0}, chain.stream, &sink).code, kUserCancelled);
    EXPECT_EQ(sink.calls.back().first, 42u) << "at half a second";
    chain.stream.slowAt = SIZE_MAX;
    chain.stream.failAt = 150;
    EXPECT_EQ(code({}), chain.stream.failure);
}

TEST(TrellisViterbi, LeavesNoFileBehind) {
    spoken_chain chain;
    const TempFile folder(".folder");
    std::filesystem::create_directory(folder.Path());
    search_settings settings;
    settings.memory = 0;
    settings.file = std::string(folder.Path()) + "/trellis";
    EXPECT_EQ(Search(settings, *chain.model, chain.logs, {0}, chain.stream).code, kNoError);
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(LogStateGraph, HasTheImpossibleWhereTheProbabilityIsNegligible) {
    hand_graph graph;
    graph.Add(1, 0, {{0, 0.5f}, {0, 0.0f}, {0, 9e-16f}, {0, 1.0f}});
    const log_state_graph logs = InLogs(graph);
    const state_arc* arcs = logs[0].Arcs();
    EXPECT_EQ(arcs[0].probability, std::log(0.5f));
    EXPECT_EQ(arcs[1].probability, -1e10f);
    EXPECT_EQ(arcs[2].probability, -1e10f);
    EXPECT_EQ(arcs[3].probability, 0.0f);
}

} // namespace
} // namespace tessarin::test
