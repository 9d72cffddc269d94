#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "features/analysed_speech.h"
#include "features/scripted_pcm_stream.h"
#include "features/spectral_stream.h"
#include "support/recording_sink.h"

namespace tessarin {
namespace {

using test::analysis;
using test::kBands;
using test::observations;
using test::ReadAll;
using test::ScriptedPcmStream;
using test::Speechlike;
using ::testing::ElementsAre;
using ::testing::Key;

TEST(SpectralFloor, SubtractsAFloorThatTheHostGives) {
    analysis model;
    model.descriptor.numCepstra = 20;
    ScriptedPcmStream pcm(Speechlike(4000));
    CSpectralStream stream;
    ASSERT_EQ(stream.Init2(&pcm, 1, &model.descriptor), kNoError);
    const auto firstCepstrum = [&] {
        stream.Restart();
        std::vector<float> cepstra(20);
        float energy = 0;
        EXPECT_EQ(stream.CalcCepstrum(cepstra.data(), 20, &energy), kNoError);
        return cepstra[0];
    };
    const float before = firstCepstrum();
    const std::vector<float> floor(kBands, 0.25f);
    EXPECT_EQ(stream.SetNoiseFloor(2, floor.data(), kBands), kNotAvailable);
    EXPECT_EQ(firstCepstrum(), before);
    EXPECT_EQ(stream.SetNoiseFloor(1, floor.data(), kBands), kNoError);
    EXPECT_NEAR(firstCepstrum(), before - 0.25f * kBands, 1e-3);

    // A bank of another width has no use for that floor and learns its own.
    test::SetMelBands(model.descriptor, kBands - 1);
    ASSERT_EQ(stream.Init2(&pcm, 1, &model.descriptor), kNoError);
    EXPECT_GT(firstCepstrum(), 0.0f);
}

TEST(SpectralFloor, LearnsAFloorWhenTheGivenOneHasTheWrongWidth) {
    analysis model;
    ScriptedPcmStream pcm(std::vector<float>(Speechlike(16000)));
    CSpectralStream stream;
    ASSERT_EQ(stream.Init2(&pcm, 1, &model.descriptor), kNoError);
    const std::vector<float> floor(kBands, 100.0f);
    for (const int32_t count : {kBands - 1, kBands + 1, -1, 0}) {
        EXPECT_EQ(stream.SetNoiseFloor(1, floor.data(), count), kOutOfRange);
    }
    const auto frames = [&] {
        stream.Restart();
        observations all;
        for (int i = 0; i < 12; ++i) {
            std::vector<float> cepstra(20);
            float energy = 0;
            EXPECT_EQ(stream.CalcCepstrum(cepstra.data(), 8, &energy), kNoError);
            all.push_back(cepstra);
        }
        return all;
    };
    const observations learning = frames();
    // What is learned survives a restart, so the frames that taught it are reduced the next time.
    const observations reduced = frames();
    stream.SetProcessingFlags(0);
    const observations plain = frames();
    EXPECT_EQ(learning[9], plain[9]);
    EXPECT_NEAR(learning[10][0], plain[10][0] - plain[9][0] / 10, 1e-3);
    EXPECT_NEAR(reduced[0][0], plain[0][0] - plain[9][0] / 10, 1e-3);
}

TEST(SpectralMean, LeavesTheObservationsAsTheyAre) {
    for (const int32_t features : {15, 39}) {
        analysis model;
        model.descriptor.numFeatures = features;
        const std::vector<float> audio = Speechlike(160 * 2500);
        ScriptedPcmStream pcm(audio);
        CSpectralStream stream;
        ASSERT_EQ(stream.Init2(&pcm, 1, &model.descriptor), kNoError);
        const observations plain = ReadAll(stream, features);

        model.descriptor.flags = kCalcSpectralMean;
        test::recording_sink sink;
        pcm.Start();
        ASSERT_EQ(stream.Init2(&pcm, 1, &model.descriptor), kNoError);
        stream.SetProgressSink(&sink);
        EXPECT_EQ(ReadAll(stream, features), plain);
        EXPECT_THAT(sink.phases, ElementsAre("Calculating Spectral Mean...", "Recognizing..."));
        EXPECT_THAT(sink.calls, ElementsAre(Key(0u), Key(1000u), Key(2000u)));
    }
}

TEST(SpectralMean, CanBeCancelled) {
    analysis model;
    model.descriptor.flags = kCalcSpectralMean;
    test::recording_sink sink(1);
    ScriptedPcmStream pcm(Speechlike(160 * 1500));
    CSpectralStream stream;
    ASSERT_EQ(stream.Init2(&pcm, 1, &model.descriptor), kNoError);
    stream.SetProgressSink(&sink);
    std::vector<float> features(15);
    float energy = 0;
    EXPECT_EQ(stream.GetObservation(features.data(), &energy), kUserCancelled);
    EXPECT_EQ(sink.calls.back().first, 1000u);
}

} // namespace
} // namespace tessarin
