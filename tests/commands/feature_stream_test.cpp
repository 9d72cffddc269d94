#include "commands/feature_stream.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include <gmock/gmock.h>

#include "commands/plain_warp.h"
#include "commands/time_warp.h"
#include "features/analysed_speech.h"
#include "features/scripted_pcm_stream.h"
#include "recognition/fixtures.h"
#include "support/byte_builder.h"
#include "support/signals.h"

namespace tessarin {
namespace {

using testing::ElementsAre;

constexpr int32_t kFeatures = 5;

/// `count` random observations, the energy of each its number.
test::list_stream RandomStream(size_t count, uint32_t seed) {
    test::Noise noise(seed);
    test::list_stream stream;
    for (size_t i = 0; i < count; ++i) {
        std::vector<float> features(kFeatures);
        std::generate(features.begin(), features.end(), [&] { return noise.Next(-3, 3); });
        stream.observations.push_back(features);
        stream.energies.push_back(static_cast<float>(i));
    }
    stream.minEnergy = -4.0f;
    stream.maxEnergy = 44.0f;
    return stream;
}

/// The energies of all observations that are left in `stream`.
std::vector<float> EnergiesOf(CFeatureStream& stream) {
    std::vector<float> features(static_cast<size_t>(stream.FeatureCount()));
    std::vector<float> energies(1);
    while (stream.GetObservation(features.data(), &energies.back()) == kNoError) {
        energies.push_back(0.0f);
    }
    energies.pop_back();
    return energies;
}

float Distance(const CFeatureStream& a, const CFeatureStream& b) {
    float distance = 0.0f;
    a.MatchStream(b, &distance);
    return distance;
}

TEST(FeatureStream, GivesWhatItRecorded) {
    test::list_stream source = RandomStream(3, 1);
    const std::vector<std::vector<float>> recorded = source.observations;
    CFeatureStream stream;
    ASSERT_EQ(stream.Record(source, kFeatures, 0.0f), kNoError);
    EXPECT_EQ(source.readsBehindEnd, 0);

    EXPECT_EQ(stream.GetNumObservations(), 3u);
    EXPECT_EQ(stream.GetSampleRate(), 16000.0f);
    uint32_t window = 0;
    uint32_t overlap = 0;
    stream.GetFrameGeometry(&window, &overlap);
    EXPECT_EQ(window, 320u);
    EXPECT_EQ(overlap, 160u);
    float minimum = 0;
    float maximum = 0;
    stream.GetEnergyRange(&minimum, &maximum);
    EXPECT_EQ(minimum, -4.0f);
    EXPECT_EQ(maximum, 44.0f);

    std::vector<float> features(kFeatures);
    float energy = -1;
    for (size_t i = 0; i < recorded.size(); ++i) {
        ASSERT_EQ(stream.GetObservation(features.data(), &energy), kNoError);
        EXPECT_EQ(features, recorded[i]);
        EXPECT_EQ(energy, static_cast<float>(i));
    }
    EXPECT_EQ(stream.GetObservation(features.data(), &energy), kOutOfRange);
    stream.Rewind();
    EXPECT_THAT(EnergiesOf(stream), ElementsAre(0, 1, 2));

    uint32_t count = 7;
    EXPECT_EQ(stream.GetBandEnergies(features.data(), &count), kNotAvailable);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(stream.SetNoiseFloor(1, features.data(), 1), kNotAvailable);
}

TEST(FeatureStream, LeavesOutWhatIsNotAboveTheFloor) {
    const struct {
        float floor;
        std::vector<float> energies;
    } cases[] = {{-1, {0, 1, 2, 3}}, {0, {0, 1, 2, 3}}, {1, {2, 3}}, {1.5, {2, 3}}, {3, {}}};
    for (const auto& each : cases) {
        SCOPED_TRACE(each.floor);
        test::list_stream source = RandomStream(4, 1);
        CFeatureStream stream;
        ASSERT_EQ(stream.Record(source, kFeatures, each.floor), kNoError);
        EXPECT_EQ(stream.GetNumObservations(), each.energies.size());
        EXPECT_EQ(EnergiesOf(stream), each.energies);
        EXPECT_EQ(stream.SaveFrames(nullptr), 12u + 4 * (kFeatures + 2) * 4);
    }
}

TEST(FeatureStream, HandsOnTheCodeOfAFailedRead) {
    test::ScriptedPcmStream pcm(test::Speechlike(8000));
    test::analysis wide;
    wide.descriptor.numFeatures = 38;
    CSpectralStream spectral;
    ASSERT_EQ(spectral.Init2(&pcm, 1, &wide.descriptor), kNoError);
    EXPECT_EQ(CFeatureStream().Record(spectral, kFeatures, 0.0f), kInvalidArgument);
    EXPECT_FALSE(spectral.HasStarted());

    test::list_stream source = RandomStream(4, 1);
    source.failAt = 2;
    CFeatureStream stream;
    EXPECT_EQ(stream.Record(source, kFeatures, 0.0f), source.failure);
    EXPECT_EQ(CFeatureStream().Record(source, 0, 0.0f), kInvalidArgument);
}

TEST(FeatureStream, SurvivesSavingAndLoading) {
    for (const size_t count : {size_t{0}, size_t{1}, size_t{2000}}) { // more than a block holds
        SCOPED_TRACE(count);
        test::list_stream source = RandomStream(count, 2);
        CFeatureStream stream;
        ASSERT_EQ(stream.Record(source, kFeatures, 0.0f), kNoError);
        test::bytes saved(stream.SaveFrames(nullptr));
        EXPECT_EQ(stream.SaveFrames(saved.data()), saved.size());

        CFeatureStream loaded;
        ASSERT_TRUE(loaded.LoadFrames(saved.data(), 0.5f));
        EXPECT_EQ(loaded.FeatureCount(), kFeatures);
        EXPECT_EQ(loaded.GetNumObservations(), count == 0 ? 0 : count - 1); // by its own floor
        test::bytes again(loaded.SaveFrames(nullptr));
        loaded.SaveFrames(again.data());
        EXPECT_EQ(again, saved);
    }
}

TEST(FeatureStream, LoadsNothingImpossible) {
    const struct {
        uint32_t frames, features, stride;
        float value;
        bool loads;
    } cases[] = {
        {1, 2, 4, 1.0f, true},        {0, 64, 66, 1.0f, true},    {1, 2, 5, 1.0f, false},
        {0, 0, 2, 1.0f, false},       {0, 65, 67, 1.0f, false},   {1000001, 1, 3, 1.0f, false},
        {0, UINT32_MAX, 1, 0, false}, {1, 2, 4, INFINITY, false}, {1, 2, 4, NAN, false}};
    for (const auto& each : cases) {
        SCOPED_TRACE(testing::Message() << each.frames << ' ' << each.features << ' ' << each.stride
                                        << ' ' << each.value);
        const test::bytes data = test::ByteBuilder()
                                     .U32(each.frames)
                                     .U32(each.features)
                                     .U32(each.stride)
                                     .F32(0)
                                     .F32(0)
                                     .F32(0)
                                     .F32(each.value)
                                     .Take();
        EXPECT_EQ(CFeatureStream().LoadFrames(data.data(), 0.0f), each.loads);
    }
}

// Kept: the last three features do not count.
TEST(FeatureStream, MatchesTheActiveFramesWithoutTheirEnergy) {
    test::list_stream sources[] = {RandomStream(9, 3), RandomStream(14, 4)};
    CFeatureStream streams[2];
    for (int s = 0; s < 2; ++s) {
        ASSERT_EQ(streams[s].Record(sources[s], kFeatures, 2.0f), kNoError);
    }
    std::vector<std::vector<float>> distances(6, std::vector<float>(11));
    for (size_t i = 0; i < 6; ++i) {
        for (size_t j = 0; j < 11; ++j) {
            const std::vector<float>& a = sources[0].observations[i + 3];
            const std::vector<float>& b = sources[1].observations[j + 3];
            distances[i][j] = FrameDistance(a.data(), b.data(), kFeatures - 3);
        }
    }
    EXPECT_EQ(Distance(streams[0], streams[1]), test::plain_warp(distances).Distance(10));
    EXPECT_EQ(Distance(streams[0], streams[0]), 0.0f);
}

TEST(FeatureStream, DoesNotMatchWhatCannotBeCompared) {
    test::list_stream source = RandomStream(4, 1);
    CFeatureStream whole;
    ASSERT_EQ(whole.Record(source, kFeatures, 0.0f), kNoError);
    source.next = 0;
    CFeatureStream silent;
    ASSERT_EQ(silent.Record(source, kFeatures, 100.0f), kNoError);
    source.next = 0;
    for (std::vector<float>& features : source.observations) {
        features.push_back(0);
    }
    CFeatureStream wider;
    ASSERT_EQ(wider.Record(source, kFeatures + 1, 0.0f), kNoError);
    for (const CFeatureStream* other : {&silent, &wider}) {
        EXPECT_EQ(Distance(whole, *other), kNoWarpDistance);
        EXPECT_EQ(Distance(*other, whole), kNoWarpDistance);
    }
}

} // namespace
} // namespace tessarin
