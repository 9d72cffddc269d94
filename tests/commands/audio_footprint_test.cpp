#include "commands/audio_footprint.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "commands/plain_warp.h"
#include "features/buffer_feature_stream.h"
#include "features/spectral_feature_descriptor.h"
#include "recognition/fixtures.h"
#include "support/signals.h"

namespace tessarin {
namespace {

constexpr int32_t kFeatures = 4;

/// A live stream whose observations a test appends.
class scripted_live final : public buffer_feature_stream {
public:
    explicit scripted_live(int32_t featureCount = kFeatures) {
        CSpectralFeatureDescriptor descriptor;
        descriptor.numFeatures = featureCount;
        static_cast<void>(Init(&descriptor, 0.0f));
    }
    int32_t GetNumFeatures() override { return static_cast<int32_t>(frames.size()); }
    const float* GetFeature(int32_t index) override {
        return frames[static_cast<size_t>(index)].data();
    }

    std::vector<std::vector<float>> frames;
};

std::vector<float> RandomFrame(test::Noise& noise) {
    std::vector<float> frame(kFeatures);
    std::generate(frame.begin(), frame.end(), [&] { return noise.Next(-3, 3); });
    return frame;
}

/// A sample of random observations, the first of them silent.
struct sample {
    explicit sample(size_t count) {
        test::Noise noise(7);
        for (size_t i = 0; i < count; ++i) {
            source.observations.push_back(RandomFrame(noise));
            source.energies.push_back(i == 0 ? 1.0f : 9.0f);
        }
        EXPECT_EQ(footprint.Record(source, kFeatures, 2.0f), kNoError);
    }

    /// The distance of `frames` by the whole table.
    float Expected(const std::vector<std::vector<float>>& frames) const {
        std::vector<std::vector<float>> distances;
        for (const std::vector<float>& frame : frames) {
            std::vector<float>& row = distances.emplace_back();
            for (size_t j = 1; j < source.observations.size(); ++j) {
                row.push_back(FrameDistance(frame.data(), source.observations[j].data(),
                                            kFeatures)); // Kept: all of the features
            }
        }
        const test::plain_warp warp(distances);
        return warp.Distance(warp.CheapestColumn());
    }

    test::list_stream source;
    audio_footprint footprint;
};

TEST(AudioFootprint, MatchesAsAudioArrives) {
    sample recorded(7);
    scripted_live live;
    test::Noise noise(8);
    for (const size_t arrivals : {2, 1, 0, 4}) { // 0: called again without news
        for (size_t i = 0; i < arrivals; ++i) {
            live.frames.push_back(RandomFrame(noise));
        }
        float distance = 0.0f;
        ASSERT_EQ(recorded.footprint.MatchLive(live, &distance), kNoError);
        EXPECT_EQ(distance, recorded.Expected(live.frames));
    }
}

TEST(AudioFootprint, BeginsAnewWhenToldOrWhenTheUtteranceIsShorter) {
    for (const bool isTold : {false, true}) {
        SCOPED_TRACE(isTold);
        sample recorded(5);
        scripted_live live;
        test::Noise noise(9);
        float distance = 0.0f;
        for (int i = 0; i < 4; ++i) {
            live.frames.push_back(RandomFrame(noise));
        }
        ASSERT_EQ(recorded.footprint.MatchLive(live, &distance), kNoError);
        live.frames = {RandomFrame(noise), RandomFrame(noise), RandomFrame(noise)};
        if (isTold) {
            recorded.footprint.ResetMatch();
            live.frames.resize(5, RandomFrame(noise)); // longer than the one before
        }
        ASSERT_EQ(recorded.footprint.MatchLive(live, &distance), kNoError);
        EXPECT_EQ(distance, recorded.Expected(live.frames));
    }
}

TEST(AudioFootprint, FindsNoDistanceWhereThereIsNothingToMatch) {
    sample recorded(5);
    scripted_live live;
    float distance = 0.0f;
    EXPECT_EQ(recorded.footprint.MatchLive(live, &distance), kNoError);
    EXPECT_EQ(distance, kNoWarpDistance);
    sample silent(1);
    live.frames.push_back(std::vector<float>(kFeatures));
    EXPECT_EQ(silent.footprint.MatchLive(live, &distance), kNoError);
    EXPECT_EQ(distance, kNoWarpDistance);

    scripted_live narrow(kFeatures - 1);
    narrow.frames = live.frames;
    EXPECT_EQ(recorded.footprint.MatchLive(narrow, &distance), kOutOfRange);
    EXPECT_EQ(distance, kNoWarpDistance);
    scripted_live wide(kFeatures + 1);
    wide.frames.assign(3, std::vector<float>(kFeatures + 1));
    EXPECT_EQ(recorded.footprint.MatchLive(wide, &distance), kNoError);
    EXPECT_LT(distance, kNoWarpDistance);
}

} // namespace
} // namespace tessarin
