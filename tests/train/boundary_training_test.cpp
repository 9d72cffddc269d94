#include "apps/train/boundary_training.h"

#include <gtest/gtest.h>

#include "apps/train/mixture_training.h"
#include "apps/train/random.h"

namespace tessarin::training {
namespace {

/// Utterances of two phones in turn. The second begins with what sounds like the first more often
/// than not, so that likelihood alone puts the boundary too late.
std::vector<labelled_speech> Utterances() {
    random_source random("utterances", 0);
    std::vector<labelled_speech> all;
    for (int i = 0; i < 60; ++i) {
        labelled_speech speech;
        speech.observations.width = 1;
        for (size_t run = 0; run < 6; ++run) {
            const size_t count = 6 + random.Index(4);
            speech.runs.push_back({run % 2, speech.observations.values.size(), count});
            for (size_t t = 0; t < count; ++t) {
                double place = run % 2 == 0 ? 0.0 : 4.0;
                if (run % 2 == 1 && t < 2) {
                    place = 1.0;
                }
                speech.observations.values.push_back(
                    static_cast<float>(place + 0.8 * random.Gaussian()));
            }
        }
        DivideEvenly(speech);
        all.push_back(speech);
    }
    return all;
}

TEST(TrainBoundaries, MakesTheKnownBoundariesLikelierThanTheirRivals) {
    const std::vector<labelled_speech> speech = Utterances();
    const observation_statistics statistics = MeasureObservations(speech);
    const transition_model transitions = CountTransitions(speech, 2);
    const std::vector<state_mixture> start = TrainMixtures(speech, statistics, 6, 2, 1);
    std::vector<state_mixture> mixtures = start;
    const std::vector<double> floors = {0.01 * statistics.variance[0]};
    const std::vector<double> progress =
        TrainBoundaries(speech, transitions, floors, 6, 1, mixtures);
    ASSERT_EQ(progress.size(), 6u);
    for (const double share : progress) {
        EXPECT_LE(share, 0.0); // the known division is one among all
    }
    EXPECT_GT(progress.back(), progress.front());

    std::vector<state_mixture> inThreads = start;
    TrainBoundaries(speech, transitions, floors, 6, 2, inThreads);
    for (size_t state = 0; state < mixtures.size(); ++state) {
        EXPECT_EQ(inThreads[state][0].mean, mixtures[state][0].mean);
        EXPECT_EQ(inThreads[state].back().mean, start[state].back().mean); // the broad one stays
    }
}

} // namespace
} // namespace tessarin::training
