#include "apps/train/mixture_training.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "apps/train/model_assembly.h"
#include "apps/train/random.h"
#include "model/accoustic_hmm.h"
#include "model/phoneme_alphabet.h"

namespace tessarin::training {
namespace {

/// Observations of two values: those of state 0 are at (-5, 0) or, three times as often, at (5, 0);
/// those of state 1 at (0, 3).
std::vector<labelled_speech> Clusters() {
    random_source random("clusters", 0);
    labelled_speech speech;
    speech.observations.width = 2;
    for (int i = 0; i < 4000; ++i) {
        const bool second = i % 5 == 4;
        const double centre = second ? 0.0 : i % 5 == 0 ? -5.0 : 5.0;
        speech.observations.values.push_back(static_cast<float>(centre + random.Gaussian()));
        speech.observations.values.push_back(
            static_cast<float>((second ? 3.0 : 0.0) + 0.5 * random.Gaussian()));
        speech.state.push_back(second ? 1 : 0);
    }
    return {speech};
}

TEST(TrainMixtures, FindsClustersAndTheirWeights) {
    const std::vector<labelled_speech> speech = Clusters();
    const std::vector<state_mixture> mixtures =
        TrainMixtures(speech, MeasureObservations(speech), 2, 2, 1);
    const state_mixture& found = mixtures[0];
    double weightOfFirst = 0.0;
    double weight = 0.0;
    for (size_t m = 0; m + 1 < found.size(); ++m) {
        EXPECT_NEAR(std::abs(found[m].mean[0]), 5.0, 2.5);
        EXPECT_NEAR(found[m].mean[1], 0.0, 1.2);
        EXPECT_LT(found[m].variance[0], 2.0);
        weight += found[m].weight;
        weightOfFirst += found[m].mean[0] < 0.0 ? found[m].weight : 0.0;
    }
    EXPECT_NEAR(weight, 1.0 - 1e-5, 1e-9);
    EXPECT_NEAR(weightOfFirst, 0.25, 0.01);
    EXPECT_EQ(found.back().weight, 1e-5);
}

TEST(TrainMixtures, GivesMoreGaussiansToStatesWithMoreObservations) {
    const std::vector<labelled_speech> speech = Clusters(); // 3200 observations against 800
    const auto mixtures = TrainMixtures(speech, MeasureObservations(speech), 2, 15, 1);
    EXPECT_EQ(mixtures[0].size(), 24u);
    EXPECT_EQ(mixtures[1].size(), 8u);
}

TEST(TrainMixtures, DoesNotDependOnTheThreads) {
    const std::vector<labelled_speech> speech = Clusters();
    const observation_statistics statistics = MeasureObservations(speech);
    const auto one = TrainMixtures(speech, statistics, 2, 4, 1);
    const auto two = TrainMixtures(speech, statistics, 2, 4, 2);
    for (size_t state = 0; state < 2; ++state) {
        for (size_t m = 0; m < one[state].size(); ++m) {
            EXPECT_EQ(one[state][m].mean, two[state][m].mean);
            EXPECT_EQ(one[state][m].variance, two[state][m].variance);
        }
    }
}

TEST(TrainMixtures, AStateThatIsNeverHeardHasFiniteScores) {
    const std::vector<labelled_speech> speech = Clusters();
    const auto mixtures = TrainMixtures(speech, MeasureObservations(speech), 3, 4, 1);
    const float x[] = {100.0f, -100.0f};
    EXPECT_TRUE(std::isfinite(mixture_scorer(mixtures[2]).Score(x)));
}

TEST(AssembleModel, ScoresLikeTheTrainerAndLeadsOn) {
    const size_t numPhones = PhonemeAlphabet().size();
    std::vector<state_mixture> mixtures;
    for (size_t state = 0; state < numPhones * kStates; ++state) {
        const double place = 0.1 * static_cast<double>(state);
        mixtures.push_back({{0.9, std::vector<double>(38, place), std::vector<double>(38, 1.5)},
                            {1e-5, std::vector<double>(38, 0.0), std::vector<double>(38, 9.0)}});
    }
    mixtures[7].insert(mixtures[7].begin(), mixtures[7][0]); // one more than the others
    transition_model transitions;
    transitions.stay.assign(numPhones * kStates, 0.75);
    transitions.follow.assign(numPhones, std::vector<double>(numPhones, 1.0 / 40.0));
    const std::unique_ptr<CAccousticHMM> model = AssembleModel(mixtures, transitions);

    EXPECT_EQ(model->numMixtures, 3);
    EXPECT_EQ(model->hasLongTransitions, 0u);
    EXPECT_STREQ(model->GetLabel(0, false), "x");
    const std::vector<float> x(38, 0.5f);
    for (const int32_t state : {0, 7, 119}) {
        EXPECT_NEAR(std::log(model->GetStateProbability(x.data(), state)),
                    mixture_scorer(mixtures[static_cast<size_t>(state)]).Score(x.data()), 1e-4);
        const float* row = model->transitions[static_cast<size_t>(state)];
        EXPECT_NEAR(std::accumulate(row, row + 120, 0.0), 1.0, 1e-6);
    }
}

} // namespace
} // namespace tessarin::training
