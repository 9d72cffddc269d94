#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "model/accoustic_hmm.h"
#include "support/tiny_model.h"

namespace tessarin {
namespace {

using test::tiny_model;
using testing::ElementsAre;

constexpr uint32_t kNone = CAccousticHMM::kNoPhoneme;

TEST(AccousticHMM, TheFirstLabelInFileOrderWins) {
    const auto shortFirst = tiny_model{.labels = {"x", "s", "sh"}}.Make();
    const auto longFirst = tiny_model{.labels = {"x", "sh", "s"}}.Make();
    std::vector<uint16_t> indices;
    EXPECT_FALSE(shortFirst->LabelsToIndices("sh", indices)); // `s`, then nothing begins with `h`
    EXPECT_THAT(indices, ElementsAre(1, 0));
    indices.clear();
    EXPECT_TRUE(longFirst->LabelsToIndices("shs", indices));
    EXPECT_THAT(indices, ElementsAre(1, 2));
}

TEST(AccousticHMM, UnknownCharactersAreAppendedAsPhoneme0) {
    const auto model = tiny_model{.labels = {"AA", "x", ""}}.Make();
    std::vector<uint16_t> indices = {9};
    EXPECT_FALSE(model->LabelsToIndices("xqAAA", indices));
    EXPECT_THAT(indices, ElementsAre(9, 1, 0, 0, 0));
    EXPECT_TRUE(model->LabelsToIndices("", indices));
    uint32_t index = 0;
    EXPECT_EQ(model->FindLabel("", &index), 0);
    EXPECT_EQ(index, kNone);
}

TEST(AccousticHMM, ParsesUpToThreeLabels) {
    const auto model = tiny_model{}.Make();
    const struct {
        const char* text;
        bool valid;
        uint32_t first, second, third;
    } cases[] = {
        {"s", true, 2, kNone, kNone},
        {"sAA", true, 2, 1, kNone},
        {"xsAA", true, 0, 2, 1},
        {"xsAAq", true, 0, 2, 1},
        {"", false, kNone, kNone, kNone},
        {"q", false, kNone, kNone, kNone},
        {"xq", false, kNone, kNone, kNone},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(expected.text);
        uint32_t first = 7;
        uint32_t second = 7;
        uint32_t third = 7;
        EXPECT_EQ(model->ParseLabelSequence(expected.text, &first, &second, &third),
                  expected.valid);
        EXPECT_EQ(first, expected.first);
        EXPECT_EQ(second, expected.second);
        EXPECT_EQ(third, expected.third);
    }
}

TEST(AccousticHMM, AStateBelongsToTheThirdOfItsIndexWhateverNumStates) {
    const auto model = tiny_model{.labels = {"x", "AA", "s"}, .numStates = 2}.Make();
    EXPECT_STREQ(model->GetLabel(5, true), "AA");
    EXPECT_STREQ(model->GetLabel(2, false), "s");
    EXPECT_EQ(model->GetLabel(3, false), nullptr);
    EXPECT_EQ(model->GetLabel(9, true), nullptr);
    EXPECT_EQ(model->GetLabel(-1, true), nullptr);
}

TEST(AccousticHMM, SeesTransitionsThatLeaveTheChain) {
    const auto model = tiny_model{}.Make();
    EXPECT_EQ(model->hasLongTransitions, 0u); // last states lead everywhere and do not count
    const struct { size_t from, to; } longOnes[] = {{0, 2}, {4, 3}, {3, 8}};
    for (const auto& step : longOnes) {
        model->transitions[step.from][step.to] = 1e-30f;
        model->AnalyseTopology();
        EXPECT_EQ(model->hasLongTransitions, 1u) << step.from << " to " << step.to;
        model->transitions[step.from][step.to] = 0.0f;
    }
    model->AnalyseTopology();
    EXPECT_EQ(model->hasLongTransitions, 0u);
}

TEST(AccousticHMM, LogTransitionsAreImpossibleBelow1e15) {
    const auto model = tiny_model{}.Make();
    model->transitions[0][0] = 1e-15f;
    model->transitions[0][1] = std::nextafter(1e-15f, 0.0f);
    const float_matrix logarithms = model->CalcLogTransitions();
    EXPECT_EQ(logarithms[0][0], std::log(1e-15f));
    EXPECT_EQ(logarithms[0][1], -1e10f);
    EXPECT_EQ(logarithms[4][4], std::log(0.6f));
}

TEST(AccousticHMM, CachedLogarithmsLeaveOutTheBase) {
    const auto model = tiny_model{}.Make();
    const float x[] = {1.0f, 1.5f};
    const double expected = std::log(model->GetStateProbability(x, 1));
    double cache[9] = {};
    EXPECT_EQ(model->GetCachedLogProbability(-3.0, cache, x, 1), expected + -3.0);
    EXPECT_EQ(cache[1], expected);
    EXPECT_EQ(model->GetCachedLogProbability(-3.0, cache, x, 1), expected);
    cache[1] = 0.0;
    EXPECT_EQ(model->GetCachedLogProbability(kImpossibleLog, cache, x, 1), expected);

    const float far[] = {1e9f, 0.0f};
    EXPECT_EQ(model->GetCachedLogProbability(-3.0, cache, far, 2), kImpossibleLog);
    EXPECT_EQ(cache[2], kImpossibleLog);
}

TEST(AccousticHMM, StatesWithoutGaussiansAreImpossible) {
    const auto model = tiny_model{.numMixtures = 0}.Make();
    const float x[] = {1.0f, 1.0f};
    double cache[9] = {};
    EXPECT_EQ(model->GetStateProbability(x, 8), 0.0);
    EXPECT_EQ(model->GetCachedLogProbability(0.0, cache, x, 8), kImpossibleLog);
}

} // namespace
} // namespace tessarin
