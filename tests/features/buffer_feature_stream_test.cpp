#include "features/buffer_feature_stream.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "features/spectral_feature_descriptor.h"
#include "features/test_descriptors.h"
#include "support/signals.h"

namespace tessarin {
namespace {

constexpr float kFloorDb = 5.0f;
constexpr size_t kFeatures = 15;

PCMFormat Mono(uint32_t rateHz) {
    return {rateHz << 16, 16, 1};
}

/// Noise of `ms` at each amplitude, in 16-bit samples.
std::vector<int16_t> Speech(const std::vector<std::pair<int, float>>& parts,
                            uint32_t rateHz = 16000) {
    std::vector<int16_t> samples;
    for (const auto& [ms, amplitude] : parts) {
        for (const float sample : test::WhiteNoise(rateHz / 1000 * static_cast<size_t>(ms),
                                                   amplitude, static_cast<uint32_t>(ms))) {
            samples.push_back(static_cast<int16_t>(sample));
        }
    }
    return samples;
}

struct listener : buffer_feature_stream {
    listener() { test::SetMelBands(descriptor, 24); }

    void Listen(uint32_t rateHz = 16000, float floorDb = kFloorDb) {
        ASSERT_EQ(Init(&descriptor, floorDb), 0);
        const PCMFormat format = Mono(rateHz);
        ASSERT_EQ(Reset(&format), 0);
    }
    error_code Hear(const std::vector<int16_t>& samples, size_t blockBytes) {
        const auto* data = reinterpret_cast<const uint8_t*>(samples.data());
        const size_t size = samples.size() * 2;
        error_code code = kNoError;
        for (size_t i = 0; i < size && code == kNoError; i += blockBytes) {
            code = Process(data + i, static_cast<uint32_t>(std::min(blockBytes, size - i)));
        }
        return code;
    }
    std::vector<std::vector<float>> Kept() {
        std::vector<std::vector<float>> kept;
        for (int32_t i = 0; i < GetNumFeatures(); ++i) {
            const float* frame = GetFeature(i);
            kept.emplace_back(frame, frame + kFeatures);
            kept.back().push_back(frame[kFeatures + 1]);
        }
        return kept;
    }

    CSpectralFeatureDescriptor descriptor;
};

TEST(BufferFeatureStream, GivesTheSameFramesHoweverAudioArrives) {
    const auto samples = Speech({{500, 3000.0f}});
    listener whole;
    whole.Listen();
    ASSERT_EQ(whole.Hear(samples, samples.size() * 2), 0);
    ASSERT_EQ(whole.Finish(), 0);
    const auto expected = whole.Kept();
    ASSERT_EQ(expected.size(), 46u); // the last of them from less than a hop
    // A mean is one of nothing, since audio that arrives has no length yet, and costs none of it.
    listener withMean;
    withMean.descriptor.flags = kCalcSpectralMean;
    withMean.Listen();
    ASSERT_EQ(withMean.Hear(samples, samples.size() * 2), 0);
    ASSERT_EQ(withMean.Finish(), 0);
    EXPECT_EQ(withMean.Kept(), expected);
    for (const size_t blockBytes : {64u, 2u}) {
        SCOPED_TRACE(blockBytes);
        listener live;
        live.Listen();
        ASSERT_EQ(live.Hear(samples, blockBytes), 0);
        ASSERT_EQ(live.Finish(), 0);
        // Kept: the first observation does not wait for the last of its five hops, which is then
        // silence; what follows comes a frame later.
        const auto kept = live.Kept();
        ASSERT_EQ(kept.size(), expected.size() + 1);
        EXPECT_TRUE(std::equal(kept.begin() + 15, kept.end(), expected.begin() + 14));
        EXPECT_EQ(live.GetFeature(-1), nullptr);
        EXPECT_EQ(live.GetFeature(live.GetNumFeatures()), nullptr);
    }
}

/// How many observations there are when the end of speech is found; -1 when it is not.
int EndOfSpeech(const std::vector<int16_t>& samples, float floorDb, int32_t* kept = nullptr) {
    listener live;
    live.Listen(16000, floorDb);
    int blocks = 0;
    for (size_t i = 0; i + 160 <= samples.size(); i += 160) {
        const error_code code = live.Process(samples.data() + i, 320);
        ++blocks;
        if (code != kNoError) {
            EXPECT_EQ(code, kOutOfRange);
            EXPECT_EQ(live.Process(samples.data(), 320), kOutOfRange);
            if (kept != nullptr) {
                *kept = live.GetNumFeatures();
            }
            return blocks - 4; // the first observation takes 352 samples and four hops
        }
    }
    return -1;
}

TEST(BufferFeatureStream, SpeechEndsWhenTheLastThirtyFramesAreQuiet) {
    constexpr float kAll = -1.0f; // every frame is above the floor
    int32_t kept = 0;
    // Falling energy ends it with the 60th frame, and not before.
    EXPECT_GT(EndOfSpeech(Speech({{250, 8000.0f}, {800, 0.0f}}), kAll, &kept), 0);
    EXPECT_EQ(kept, 60);
    EXPECT_EQ(EndOfSpeech(Speech({{250, 8000.0f}, {350, 0.0f}}), kAll), -1);
    // 20 dB down is an end, 10 dB is none.
    EXPECT_GT(EndOfSpeech(Speech({{1000, 8000.0f}, {400, 800.0f}}), kAll), 0);
    EXPECT_EQ(EndOfSpeech(Speech({{1000, 8000.0f}, {400, 2530.0f}}), kAll), -1);
    // A short stretch of silence is none.
    EXPECT_EQ(EndOfSpeech(Speech({{1000, 8000.0f}, {40, 0.0f}, {1000, 8000.0f}}), kAll), -1);
    // At the floor it ends however it was before; what is not above the floor counts all the same.
    EXPECT_GT(EndOfSpeech(Speech({{900, 0.0f}}), kFloorDb, &kept), 0);
    EXPECT_EQ(kept, 0);
}

TEST(BufferFeatureStream, SpeechEndsFifteenDecibelsDownOrOneAboveTheFloor) {
    constexpr float kAll = -1.0f;
    constexpr float kLoud = 8000.0f;
    const auto down = [](double db) { return kLoud * static_cast<float>(std::pow(10, -db / 20)); };
    // So little beyond the drop that all of the tail has to be quiet.
    int32_t kept = 0;
    EXPECT_GT(EndOfSpeech(Speech({{1000, kLoud}, {400, down(15.4)}}), kAll, &kept), 0);
    EXPECT_EQ(kept, 128); // thirty quiet frames; the energy is that of two frames ahead
    EXPECT_EQ(EndOfSpeech(Speech({{1000, kLoud}, {400, down(14.6)}}), kAll), -1);

    const auto steady = Speech({{1000, kLoud}});
    listener live;
    live.Listen(16000, kAll);
    ASSERT_EQ(live.Hear(steady, 320), 0);
    double sum = 0.0;
    for (const auto& frame : live.Kept()) {
        sum += static_cast<double>(frame.back());
    }
    const auto levelDb = static_cast<float>(sum / live.GetNumFeatures());
    EXPECT_GT(EndOfSpeech(steady, levelDb - 0.8f), 0);
    EXPECT_EQ(EndOfSpeech(steady, levelDb - 1.2f), -1);
}

TEST(BufferFeatureStream, CutsOffAtFourFifthsOfTheBand) {
    const auto levelDb = [](uint32_t rateHz) {
        listener live;
        live.Listen(rateHz, -100.0f);
        std::vector<int16_t> samples;
        for (const float sample : test::Sine(rateHz / 2, 6400, rateHz, 8000)) {
            samples.push_back(static_cast<int16_t>(sample));
        }
        EXPECT_EQ(live.Hear(samples, 1000000), 0);
        return live.Kept().at(20).back();
    };
    EXPECT_NEAR(levelDb(48000) - levelDb(16000), -6.0,
                1.0); // only a new rate goes through the filter
}

TEST(BufferFeatureStream, KeepsOnlyFramesAboveTheFloor) {
    listener live;
    live.Listen();
    ASSERT_EQ(live.Hear(Speech({{200, 0.0f}, {200, 3000.0f}}), 320), 0);
    ASSERT_EQ(live.Finish(), 0);
    EXPECT_GE(live.GetNumFeatures(), 17);
    EXPECT_LE(live.GetNumFeatures(), 23);
    for (const auto& frame : live.Kept()) {
        EXPECT_GT(frame.back(), kFloorDb);
    }
    EXPECT_EQ(live.Process("", 0), kOutOfRange);
    const PCMFormat format = Mono(16000);
    ASSERT_EQ(live.Reset(&format), 0);
    EXPECT_EQ(live.GetNumFeatures(), 0);
    EXPECT_EQ(live.Process("", 0), 0);
}

TEST(BufferFeatureStream, ConvertsARateOnlyWhenItIsNew) {
    const auto numFrames = [](listener& live, uint32_t rateHz) {
        const PCMFormat format = Mono(rateHz);
        EXPECT_EQ(live.Reset(&format), 0);
        EXPECT_EQ(live.Hear(Speech({{500, 3000.0f}}, rateHz), 1000000), 0);
        EXPECT_EQ(live.Finish(), 0);
        return live.GetNumFeatures();
    };
    listener live;
    ASSERT_EQ(live.Init(&live.descriptor, kFloorDb), 0);
    EXPECT_EQ(numFrames(live, 16000), 46);
    EXPECT_NEAR(numFrames(live, 32000), 46, 1);
    EXPECT_NEAR(numFrames(live, 32000), 96, 1); // Kept: taken for the model's own
    EXPECT_NEAR(numFrames(live, 16000), 46, 1);
    // Kept: 16000 Hz whatever the model's rate, so that one of 8000 Hz sees twice the frames.
    listener slow;
    slow.descriptor.sampleRate = 8000;
    test::SetMelBands(slow.descriptor, 24, 100.0f, 3800.0f);
    ASSERT_EQ(slow.Init(&slow.descriptor, kFloorDb), 0);
    EXPECT_EQ(numFrames(slow, 8000), 21);
    EXPECT_NEAR(numFrames(slow, 44000), 46, 1);
}

TEST(BufferFeatureStream, AnswersWhatItCannotDo) {
    listener live;
    const PCMFormat format = Mono(16000);
    EXPECT_EQ(live.Process("abcdef", 6), 0); // no chain yet: nothing to analyse
    EXPECT_EQ(live.Init(nullptr, kFloorDb), kInvalidArgument);
    live.descriptor.windowSize = 500;
    EXPECT_EQ(live.Init(&live.descriptor, kFloorDb), kInvalidArgument);
    live.descriptor.windowSize = 512;
    ASSERT_EQ(live.Init(&live.descriptor, -9.0f), 0);
    live.descriptor.numFeatures = 5; // narrower than what its stages still know
    live.descriptor.windowSize = 500;
    EXPECT_EQ(live.Init(&live.descriptor, kFloorDb), kInvalidArgument);
    EXPECT_EQ(live.Hear(Speech({{400, 3000.0f}}), 4000), 0);
    live.descriptor.numFeatures = 15;
    live.descriptor.windowSize = 512;
    ASSERT_EQ(live.Init(&live.descriptor, -9.0f), 0);
    // An input that was never opened keeps what is pushed, and the end comes all the same.
    EXPECT_EQ(live.Hear(Speech({{100, 3000.0f}}), 4000), 0);
    EXPECT_EQ(live.Finish(), 0);
    EXPECT_EQ(live.Reset(nullptr), kInvalidArgument);
    const PCMFormat odd{16000u << 16, 12, 1};
    EXPECT_EQ(live.Reset(&odd), kInvalidArgument);
    const PCMFormat stereo{16000u << 16, 16, 2};
    ASSERT_EQ(live.Reset(&stereo), 0);
    EXPECT_EQ(live.Hear(Speech({{400, 3000.0f}}), 999), 0);
    ASSERT_EQ(live.Reset(&format), 0);
    EXPECT_EQ(live.Process("a", 0xFFFFFFFFu), kOutOfMemory);
}

} // namespace
} // namespace tessarin
