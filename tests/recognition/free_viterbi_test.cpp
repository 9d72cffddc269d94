#include "recognition/free/free_viterbi.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "fixtures.h"
#include "recognition/literal_free_search.h"

namespace tessarin::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Pair;

using search_function = error_code (*)(const CAccousticHMM&, IObservationStream&, ProgressSink*,
                                       TArray<uint32_t>&, TArray<float>&);

struct search_run {
    error_code code = kNoError;
    std::vector<uint32_t> path;
};

search_run Search(search_function search, const CAccousticHMM& model, list_stream& stream,
                  ProgressSink* progress = nullptr) {
    stream.next = 0;
    TArray<uint32_t> path;
    TArray<float> energies;
    search_run run{search(model, stream, progress, path, energies), {}};
    run.path.assign(path.begin(), path.end());
    return run;
}

/// A phoneme loop with random, tying and missing transitions and language tables.
struct random_case {
    explicit random_case(uint32_t seed) : random(seed) {
        model = MakeLikelihoodModel({"x", "AA", "s", "t"});
        for (size_t from = 0; from < 12; ++from) {
            for (size_t to = 0; to < 12; ++to) {
                model->transitions[from][to] = OneOf({0, 0, 0, 0.25, 0.5});
            }
            model->transitions[from][from] = OneOf({0.5, 0.9, 0});
        }
        model->trigramVersion = Below(2) == 0;
        model->unigrams = {0.25f, 0.25f, 0.0f, 0.5f};
        model->bigrams = float_matrix(4, 4);
        model->trigrams.assign(4, float_matrix(4, 4));
        for (size_t a = 0; a < 4; ++a) {
            for (size_t b = 0; b < 4; ++b) {
                model->bigrams[a][b] = OneOf({0, 0.25, 0.5});
                for (size_t c = 0; c < 4; ++c) {
                    model->trigrams[a][b][c] = OneOf({-1, 0.25, 0.5, 0});
                }
            }
        }
        if (Below(2) == 0) {
            model->constraints = {2, 0, 3, 1};
        }
        const uint32_t frames = 1 + Below(40);
        for (uint32_t t = 0; t < frames; ++t) {
            std::vector<double> likelihoods(12);
            for (double& likelihood : likelihoods) {
                likelihood = OneOf({0.5, 0.5, 1.0, 0.25, 0.0});
            }
            stream.Add(likelihoods);
        }
    }
    uint32_t Below(uint32_t bound) { return static_cast<uint32_t>(random() % bound); }
    float OneOf(const std::vector<double>& values) {
        return static_cast<float>(values[Below(static_cast<uint32_t>(values.size()))]);
    }

    std::mt19937 random;
    std::unique_ptr<CAccousticHMM> model;
    list_stream stream;
};

TEST(FreeViterbi, EqualsTheLiteralSearch) {
    for (uint32_t seed = 0; seed < 1000; ++seed) {
        SCOPED_TRACE(seed);
        random_case each(seed);
        const search_run run = Search(FreeViterbi, *each.model, each.stream);
        ASSERT_EQ(run.code, kNoError);
        ASSERT_EQ(run.path, LiteralFreePath(*each.model, each.stream.observations));
    }
}

error_code LMInLargeSteps(const CAccousticHMM& model, IObservationStream& stream,
                          ProgressSink* progress, TArray<uint32_t>& path, TArray<float>& energies) {
    return FreeViterbiLM(model, stream, progress, path, energies);
}

/// Small enough that the hypotheses are thinned out again and again.
error_code LMInSmallSteps(const CAccousticHMM& model, IObservationStream& stream,
                          ProgressSink* progress, TArray<uint32_t>& path, TArray<float>& energies) {
    return FreeViterbiLM(model, stream, progress, path, energies, 1 + path.GetSize() % 3 * 40);
}

TEST(FreeViterbiLM, EqualsTheLiteralSearch) {
    int found = 0;
    for (uint32_t seed = 0; seed < 1000; ++seed) {
        SCOPED_TRACE(seed);
        random_case each(seed);
        const std::vector<uint32_t> expected =
            LiteralLanguagePath(*each.model, each.stream.observations);
        const search_function search = seed % 20 == 0 ? LMInLargeSteps : LMInSmallSteps;
        const search_run run = Search(search, *each.model, each.stream);
        ASSERT_EQ(run.code, expected.empty() ? kRecognitionFailed : kNoError);
        if (!expected.empty()) {
            ASSERT_EQ(run.path, expected);
            ++found;
        }
    }
    EXPECT_GT(found, 200);
    EXPECT_LT(found, 1000);
}

/// Every phoneme after every other.
std::unique_ptr<CAccousticHMM> LoopModel(std::vector<std::string> labels) {
    auto model = MakeLikelihoodModel(std::move(labels));
    const auto total = static_cast<size_t>(model->GetTotalStates());
    for (size_t s = 0; s < total; ++s) {
        model->transitions[s][s] = 0.5f;
        if (s % 3 < 2) {
            model->transitions[s][s + 1] = 0.5f;
        }
        for (size_t to = 0; s % 3 == 2 && to < total; to += 3) {
            model->transitions[s][to] = 0.5f / static_cast<float>(model->numModels);
        }
    }
    model->unigrams.assign(model->labels.size(), 0.5f);
    model->bigrams = float_matrix(model->labels.size(), model->labels.size());
    model->trigrams.assign(model->labels.size(),
                           float_matrix(model->labels.size(), model->labels.size()));
    return model;
}

TEST(FreeViterbi, HoldsMoreStatesThanAByte) {
    list_stream none;
    EXPECT_EQ(Search(FreeViterbi, *LoopModel({"x", "AA"}), none).code, kNoError);
    const auto model = LoopModel(std::vector<std::string>(100, "s"));
    list_stream stream;
    for (const size_t state : {297u, 298u, 299u, 297u, 298u, 299u}) {
        stream.AddOnly(state, 300, 1);
    }
    EXPECT_EQ(Search(FreeViterbi, *model, stream).path,
              LiteralFreePath(*model, stream.observations));
    EXPECT_EQ(Search(FreeViterbi, *model, stream).path[0], 297u);
}

TEST(FreeViterbiLM, FillsThePathWhenNothingIsLeft) {
    const auto model = LoopModel({"x", "AA"});
    list_stream stream;
    stream.AddOnly(1, 6, 1);
    stream.Add(std::vector<double>(6, 0.0));
    stream.AddOnly(4, 6, 3);
    const search_run run = Search(FreeViterbiLM, *model, stream);
    EXPECT_EQ(run.code, kRecognitionFailed);
    EXPECT_THAT(run.path, Each(0u));
    EXPECT_EQ(run.path.size(), 5u);
}

TEST(FreeSearches, ReportEveryHundredObservationsAndPassOnFailedReads) {
    const auto model = LoopModel({"x", "AA"});
    for (const search_function search : {&FreeViterbi, &LMInLargeSteps}) {
        list_stream stream;
        stream.AddOnly(1, 6, 250, 0, 0.5);
        recording_sink sink;
        EXPECT_EQ(Search(search, *model, stream, &sink).code, kNoError);
        EXPECT_THAT(sink.calls, ElementsAre(Pair(100, 249), Pair(200, 249)));
        recording_sink cancelling(0);
        EXPECT_EQ(Search(search, *model, stream, &cancelling).code, kUserCancelled);
        EXPECT_EQ(stream.next, 100u);
        stream.slowAt = 42;
        EXPECT_EQ(Search(search, *model, stream, &cancelling).code, kUserCancelled);
        EXPECT_EQ(stream.next, 43u) << "at half a second";
        stream.slowAt = SIZE_MAX;
        for (const size_t failAt : {0u, 42u}) {
            stream.failAt = failAt;
            EXPECT_EQ(Search(search, *model, stream).code, kFileNotFound);
        }
    }
}

} // namespace
} // namespace tessarin::test
