#include "apps/train/phone_training.h"

#include <gtest/gtest.h>

#include "apps/train/mixture_training.h"
#include "apps/train/random.h"

namespace tessarin::training {
namespace {

constexpr size_t kPhones = 3;

/// Utterances of three phones in any order. The first two differ in one value alone, in which both
/// are also heard very loud at times: likelihood alone makes their Gaussians broad and alike.
std::vector<labelled_speech> Utterances() {
    random_source random("utterances", 1);
    std::vector<labelled_speech> all;
    for (int i = 0; i < 90; ++i) {
        labelled_speech speech;
        speech.observations.width = 2;
        size_t first = 0;
        for (size_t run = 0; run < 8; ++run) {
            const size_t phone = random.Index(kPhones);
            const size_t count = 5 + random.Index(4);
            speech.runs.push_back({phone, first, count});
            first += count;
            for (size_t t = 0; t < count; ++t) {
                const bool isLoud = random.Index(8) == 0;
                const double place = isLoud ? 30.0 : static_cast<double>(phone);
                speech.observations.values.push_back(
                    static_cast<float>(place + 0.3 * random.Gaussian()));
                speech.observations.values.push_back(
                    static_cast<float>((phone == 2 ? 3.0 : 0.0) + random.Gaussian()));
            }
        }
        DivideEvenly(speech);
        all.push_back(speech);
    }
    return all;
}

TEST(TrainPhones, MakesTheKnownPhonesLikelierThanAllOthers) {
    const std::vector<labelled_speech> speech = Utterances();
    const observation_statistics statistics = MeasureObservations(speech);
    const transition_model transitions = CountTransitions(speech, kPhones);
    const std::vector<state_mixture> start =
        TrainMixtures(speech, statistics, kPhones * kStates, 1, 1);
    const std::vector<double> floors = {0.001, 0.001};
    constexpr size_t kRounds = 6;
    std::vector<state_mixture> mixtures = start;
    const std::vector<double> progress =
        TrainPhones(speech, transitions, floors, kRounds, 1, mixtures);
    ASSERT_EQ(progress.size(), kRounds);
    for (const double share : progress) {
        EXPECT_GT(share, 0.0);
        EXPECT_LT(share, 1.0);
    }
    std::vector<state_mixture> inThreads = start;
    TrainPhones(speech, transitions, floors, kRounds, 2, inThreads);
    for (size_t state = 0; state < mixtures.size(); ++state) {
        EXPECT_EQ(inThreads[state][0].mean, mixtures[state][0].mean);
        EXPECT_EQ(inThreads[state].back().mean, start[state].back().mean); // the broad one stays
    }

    const auto knownShare = [&](std::vector<state_mixture> copy) {
        return TrainPhones(speech, transitions, floors, 1, 1, copy).front();
    };
    for (int again = 0; again < 4; ++again) {
        TrainPhones(speech, transitions, floors, kRounds, 1, mixtures);
    }
    EXPECT_GT(knownShare(mixtures), knownShare(start) + 0.04);
}

TEST(TrainPhones, LeavesTheModelAsItIsWithoutSpeechForARound) {
    std::vector<labelled_speech> speech = Utterances();
    const observation_statistics statistics = MeasureObservations(speech);
    const transition_model transitions = CountTransitions(speech, kPhones);
    std::vector<state_mixture> mixtures =
        TrainMixtures(speech, statistics, kPhones * kStates, 1, 1);
    speech.resize(1);
    std::vector<state_mixture> once = mixtures;
    TrainPhones(speech, transitions, {0.001, 0.001}, 1, 1, once);
    std::vector<state_mixture> often = mixtures;
    const std::vector<double> progress =
        TrainPhones(speech, transitions, {0.001, 0.001}, 3, 1, often);
    EXPECT_EQ(progress[1], 0.0);
    EXPECT_NE(once[0][0].mean, mixtures[0][0].mean);
    EXPECT_EQ(often[0][0].mean, once[0][0].mean);
}

} // namespace
} // namespace tessarin::training
