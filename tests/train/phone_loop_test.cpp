#include "apps/train/phone_loop.h"

#include <gtest/gtest.h>

#include <cmath>

#include "apps/train/labelled_speech.h"
#include "apps/train/random.h"

namespace tessarin::training {
namespace {

constexpr size_t kPhones = 2;
constexpr size_t kAll = kPhones * kStates;
constexpr size_t kLength = 7;
constexpr double kScale = 0.4;
constexpr double kFollowPower = 2.0;

transition_model Transitions() {
    return {.stay = {0.5, 0.2, 0.7, 0.4, 0.6, 0.3}, .follow = {{0.1, 0.9}, {0.7, 0.3}}};
}

/// The probability of going from one state to another, written down plainly.
double Step(size_t from, size_t to) {
    const transition_model transitions = Transitions();
    double probability = from == to ? std::pow(transitions.stay[from], kScale) : 0.0;
    const double go = std::pow(1.0 - transitions.stay[from], kScale);
    if (from % kStates + 1 < kStates) {
        return to == from + 1 ? go : probability;
    }
    if (to % kStates == 0) {
        probability +=
            go * std::pow(transitions.follow[from / kStates][to / kStates], kFollowPower * kScale);
    }
    return probability;
}

/// Visits all paths, each with its probability.
template <class Visit>
void ForEachPath(const std::vector<double>& weights, std::vector<size_t>& path, double probability,
                 Visit visit) {
    const size_t t = path.size();
    if (t == kLength) {
        visit(path, probability);
        return;
    }
    for (size_t state = 0; state < kAll; ++state) {
        const double step = t == 0 ? (state % kStates == 0 ? 1.0 : 0.0) : Step(path.back(), state);
        if (step > 0.0) {
            path.push_back(state);
            ForEachPath(weights, path, probability * step * weights[t * kAll + state], visit);
            path.pop_back();
        }
    }
}

TEST(PhoneLoop, GainsAreThoseOfAllPathsTakenOneByOne) {
    random_source random("weights", 1);
    const std::vector<uint16_t> known = {0, 1, 2, 3, 3, 4, 5};
    std::vector<double> weights;
    for (size_t i = 0; i < kLength * kAll; ++i) {
        weights.push_back(random.Uniform(0.01, 1.0));
    }
    std::vector<double> passing(weights.size());
    std::vector<double> earned(weights.size());
    double all = 0.0;
    double worth = 0.0;
    std::vector<size_t> path;
    ForEachPath(weights, path, 1.0, [&](const std::vector<size_t>& states, double probability) {
        double own = 0.0;
        for (size_t t = 0; t < kLength; ++t) {
            own += FindWorth(states[t], known[t]);
        }
        for (size_t t = 0; t < kLength; ++t) {
            passing[t * kAll + states[t]] += probability;
            earned[t * kAll + states[t]] += probability * own;
        }
        all += probability;
        worth += probability * own;
    });
    const path_gains found =
        FindGains(phone_loop(Transitions(), kScale, kFollowPower), weights, known);
    EXPECT_NEAR(found.worth, worth / all, 1e-9);
    for (size_t i = 0; i < weights.size(); ++i) {
        EXPECT_NEAR(found.gains[i], (earned[i] - passing[i] * worth / all) / all, 1e-9) << i;
    }
}

TEST(PhoneLoop, SilenceIsWorthLessThanAPhone) {
    EXPECT_EQ(FindWorth(kStates, kStates + 2), 1.0);
    EXPECT_EQ(FindWorth(kStates, 2 * kStates), 0.0);
    EXPECT_GT(FindWorth(0, 1), 0.0);
    EXPECT_LT(FindWorth(0, 1), 0.5);
}

TEST(PhoneLoop, LongSpeechDoesNotVanish) {
    const std::vector<uint16_t> known(20000, 4);
    const std::vector<double> weights(known.size() * kAll, 1e-3);
    const path_gains found =
        FindGains(phone_loop(Transitions(), kScale, kFollowPower), weights, known);
    EXPECT_GT(found.worth, 1000.0);
    for (const double gain : found.gains) {
        ASSERT_TRUE(std::isfinite(gain));
    }
}

} // namespace
} // namespace tessarin::training
