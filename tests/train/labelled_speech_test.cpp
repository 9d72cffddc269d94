#include "apps/train/labelled_speech.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "apps/train/state_division.h"

namespace tessarin::training {
namespace {

using testing::ElementsAre;

std::vector<size_t> Starts(const std::vector<phone_interval>& phones, double speed,
                           size_t observations) {
    std::vector<size_t> starts;
    for (const phone_run& run : FindRuns(phones, speed, observations)) {
        starts.push_back(run.first);
    }
    return starts;
}

TEST(FindRuns, AnObservationBelongsToThePhoneOnePeriodLater) {
    // Observation t covers (t + 1) periods of 10 ms.
    const std::vector<phone_interval> phones = {{0, 100, 0}, {100, 160.5, 1}, {160.5, 250, 2}};
    EXPECT_THAT(Starts(phones, 1.0, 25), ElementsAre(0, 9, 16));
    EXPECT_THAT(Starts(phones, 0.8, 31), ElementsAre(0, 12, 20));
    EXPECT_EQ(FindRuns(phones, 1.0, 25)[2].count, 9u);
}

TEST(FindRuns, EveryPhoneGetsThreeObservations) {
    const std::vector<phone_interval> phones = {
        {0, 5, 0}, {5, 12, 1}, {12, 200, 2}, {200, 205, 3}, {205, 210, 4}};
    EXPECT_THAT(Starts(phones, 1.0, 21), ElementsAre(0, 3, 6, 15, 18));
    EXPECT_THAT(Starts(phones, 1.0, 15), ElementsAre(0, 3, 6, 9, 12));
    EXPECT_TRUE(FindRuns(phones, 1.0, 14).empty());
}

/// One-dimensional states at 0, 10 and 20, and no broad Gaussian to speak of.
std::vector<state_mixture> ThreeLevels() {
    std::vector<state_mixture> mixtures;
    for (const double level : {0.0, 10.0, 20.0}) {
        mixtures.push_back({{1.0, {level}, {4.0}}, {1e-5, {10.0}, {400.0}}});
    }
    return mixtures;
}

double ScoreOf(const std::vector<uint16_t>& states, const labelled_speech& speech,
               const transition_model& transitions) {
    double score = 0.0;
    for (size_t t = 0; t < states.size(); ++t) {
        score += mixture_scorer(ThreeLevels()[states[t]]).Score(speech.observations[t]);
        if (t > 0) {
            const double stay = transitions.stay[states[t - 1]];
            score += std::log(states[t] == states[t - 1] ? stay : 1.0 - stay);
        }
    }
    return score;
}

TEST(DivideByLikelihood, FindsTheBestOfAllDivisions) {
    labelled_speech speech;
    speech.observations = {1, {1, 4, -1, 12, 3, 9, 14, 16, 22, 15}};
    const size_t count = speech.observations.GetCount();
    speech.runs = {{0, 0, count}};
    speech.state.resize(count);
    transition_model transitions;
    transitions.stay = {0.7, 0.5, 0.9};
    std::vector<labelled_speech> all = {speech};
    DivideByLikelihood(all, ThreeLevels(), transitions, 1);

    double best = -1e300;
    std::vector<uint16_t> expected;
    for (size_t second = 1; second + 1 < count; ++second) {
        for (size_t third = second + 1; third < count; ++third) {
            std::vector<uint16_t> states(count);
            for (size_t t = 0; t < count; ++t) {
                states[t] = static_cast<uint16_t>((t >= second ? 1 : 0) + (t >= third ? 1 : 0));
            }
            if (const double score = ScoreOf(states, speech, transitions); score > best) {
                best = score;
                expected = states;
            }
        }
    }
    EXPECT_EQ(all[0].state, expected);
}

} // namespace
} // namespace tessarin::training
