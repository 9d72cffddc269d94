#include "audio/noise_gate.h"

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "audio/non_rtdb_noise_gate_stream.h"
#include "memory_stream.h"

namespace tessarin {
namespace {

using test::Format;
using test::Int16Bytes;
using test::MemoryStream;
using test::MonoStream;
using test::ReadAllFloats;
using testing::ElementsAre;

constexpr uint32_t kRate = 1000; // a sample a millisecond, ten a frame

/// Stretches of (milliseconds, amplitude), of alternating sign.
std::vector<int16_t> Stretches(const std::vector<std::pair<int, int>>& stretches) {
    std::vector<int16_t> samples;
    for (const auto& [ms, amplitude] : stretches) {
        for (int i = 0; i < ms; ++i) {
            samples.push_back(static_cast<int16_t>(i % 2 == 0 ? amplitude : -amplitude));
        }
    }
    return samples;
}

struct gate_options {
    float thresholdDb = -30.0f;
    float percentile = 0.0f;
    int32_t minQuietMs = 0;
    int32_t maxBlipMs = 0;
    int32_t rampMs = 0;
};

std::vector<float> Gated(const std::vector<int16_t>& samples, const gate_options& options = {}) {
    const auto source = MonoStream(kRate, samples);
    NonRTDBNoiseGateStream gate;
    EXPECT_EQ(gate.Instantiate(source.get(), 1, options.thresholdDb, options.percentile,
                               options.minQuietMs, options.maxBlipMs, options.rampMs),
              0);
    return ReadAllFloats(gate, 33);
}

/// The highest peak from `beginMs` to `endMs`.
float Peak(const std::vector<float>& samples, size_t beginMs, size_t endMs) {
    float peak = 0.0f;
    for (size_t i = beginMs; i < endMs; ++i) {
        peak = std::max(peak, std::abs(samples[i]));
    }
    return peak;
}

constexpr int kLoud = 8000; // -12 dB
constexpr int kQuiet = 100; // -50 dB

TEST(NoiseGate, SilencesWhatIsBelowTheThreshold) {
    const auto gated = Gated(Stretches({{300, kLoud}, {300, kQuiet}, {305, kLoud}}));
    ASSERT_EQ(gated.size(), 905u);
    EXPECT_EQ(Peak(gated, 0, 300), kLoud);
    EXPECT_EQ(Peak(gated, 300, 600), 0.0f);
    EXPECT_EQ(Peak(gated, 600, 905), kLoud);
    const auto open = Gated(Stretches({{300, kLoud}, {300, kQuiet}}), {.thresholdDb = -60.0f});
    EXPECT_EQ(Peak(open, 300, 600), kQuiet);
}

TEST(NoiseGate, FindsAThresholdByItself) {
    // A hundred levels, each louder than the one before.
    std::vector<std::pair<int, int>> steps;
    for (int i = 1; i <= 100; ++i) {
        steps.emplace_back(10, i * 100);
    }
    const auto samples = Stretches(steps);
    for (const auto& [percentile, silentFrames] :
         {std::pair{0.0f, 28}, std::pair{0.5f, 50}, std::pair{0.75f, 75}, std::pair{-1.0f, 0},
          std::pair{std::numeric_limits<float>::quiet_NaN(), 0}}) {
        SCOPED_TRACE(percentile);
        const auto gated = Gated(samples, {.thresholdDb = 0.0f, .percentile = percentile});
        const auto firstLoud = static_cast<size_t>(silentFrames) * 10;
        EXPECT_EQ(Peak(gated, 0, firstLoud), 0.0f);
        EXPECT_EQ(Peak(gated, firstLoud, firstLoud + 10), silentFrames * 100 + 100);
    }
    EXPECT_EQ(LevelAtPercentile({-10.0f, -20.0f}, 1.0f), -40.0f);
    EXPECT_EQ(LevelAtPercentile({}, 0.5f), -40.0f);
}

TEST(NoiseGate, LevelsArePeaksBelowFullScale) {
    const std::vector<float> samples = {-32768, 1, 0, 0, 0, 0, 0, 0, 0, 0, // a frame
                                        0,      0, 0, 0, 0, 0, 0, 0, 0, 0, 3276.8f};
    const auto levels = PeakLevels(samples, 1000.0f);
    ASSERT_EQ(levels.size(), 3u); // the last one of a single sample
    EXPECT_NEAR(levels[0], 0.0f, 1e-4f);
    EXPECT_EQ(levels[1], -std::numeric_limits<float>::infinity());
    EXPECT_NEAR(levels[2], -20.0f, 1e-4f);
    EXPECT_EQ(PeakLevels(samples, 50.0f).size(), samples.size()); // below 100 Hz: a sample a frame
}

TEST(NoiseGate, ShortGapsStay) {
    for (const int gapMs : {100, 110, 120, 240}) {
        SCOPED_TRACE(gapMs);
        const auto gated = Gated(Stretches({{300, kLoud}, {gapMs, kQuiet}, {300, kLoud}}));
        const auto end = static_cast<size_t>(300 + gapMs);
        EXPECT_EQ(Peak(gated, 300, end), gapMs < 120 ? kQuiet : 0);
    }
}

TEST(NoiseGate, ClicksInTheQuietGo) {
    struct {
        int before, click, after;
        bool goes;
    } const cases[] = {{300, 100, 300, true},  {200, 100, 300, false}, {300, 100, 200, false},
                       {300, 150, 300, false}, {300, 140, 300, true},  {220, 100, 220, true}};
    for (const auto& [before, click, after, goes] : cases) {
        SCOPED_TRACE(before * 1000 + after);
        const auto gated = Gated(Stretches(
            {{500, kLoud}, {before, kQuiet}, {click, kLoud}, {after, kQuiet}, {500, kLoud}}));
        const auto from = static_cast<size_t>(500 + before);
        EXPECT_EQ(Peak(gated, from, from + static_cast<size_t>(click)), goes ? 0 : kLoud);
    }
    // At the start the quiet before is not asked for, at the end not the quiet after.
    const auto first = Gated(Stretches({{130, kQuiet}, {100, kLoud}, {300, kQuiet}, {500, kLoud}}));
    EXPECT_EQ(Peak(first, 0, 530), 0.0f);
    const auto last = Gated(Stretches({{500, kLoud}, {300, kQuiet}, {100, kLoud}}));
    EXPECT_EQ(Peak(last, 500, 900), 0.0f);
    // Kept: two clicks with a short gap are one sound of 240 ms.
    const auto two = Gated(Stretches({{500, kLoud},
                                      {300, kQuiet},
                                      {70, kLoud},
                                      {100, kQuiet},
                                      {70, kLoud},
                                      {300, kQuiet},
                                      {500, kLoud}}));
    EXPECT_EQ(Peak(two, 800, 1040), kLoud);
}

TEST(NoiseGate, RampsFadeOutAndIn) {
    const std::vector<int16_t> loudThenOnes(200, int16_t{kLoud});
    auto samples = loudThenOnes;
    samples.insert(samples.end(), 200, int16_t{100});
    samples.insert(samples.end(), 200, int16_t{kLoud});
    const auto gated = Gated(samples, {.rampMs = 4});
    const std::vector<float> edge(gated.begin() + 198, gated.begin() + 206);
    EXPECT_THAT(edge, ElementsAre(kLoud, kLoud, 100, 75, 50, 25, 0, 0));
    const std::vector<float> rise(gated.begin() + 394, gated.begin() + 402);
    EXPECT_THAT(rise, ElementsAre(0, 0, 0, 25, 50, 75, kLoud, kLoud));
    // A stretch shorter than both ramps fades out and then in, within itself.
    const auto brief = Gated(samples, {.rampMs = 150});
    EXPECT_EQ(brief[199], kLoud);
    EXPECT_EQ(brief[200], 100.0f);
    EXPECT_NEAR(brief[300], 100.0f * (50.0f / 150) * (50.0f / 150), 1e-3f);
    EXPECT_EQ(brief[400], kLoud);
    // So does one shorter than a ramp, which is as steep as ever.
    const auto slow = Gated(samples, {.rampMs = 1000});
    EXPECT_NEAR(slow[300], 100.0f * (900.0f / 1000) * (900.0f / 1000), 1e-3f);
}

TEST(NoiseGateStream, ReadsOneChannelAs16BitWhateverTheSource) {
    const auto source = counted_ptr<MemoryStream>::Adopt(
        new MemoryStream(Format(kRate, 16, 2), Int16Bytes({1, 2, 3, 4, 5, 6})));
    NonRTDBNoiseGateStream gate;
    EXPECT_EQ(gate.Instantiate(source.get(), 0, -90, 0, 0, 0, 0), kInvalidArgument);
    EXPECT_EQ(gate.Instantiate(nullptr, 1, -90, 0, 0, 0, 0), kInvalidArgument);
    ASSERT_EQ(gate.Instantiate(source.get(), 2, -120, 0, 0, 1, 0), 0);
    EXPECT_EQ(gate.GetByteLength(), 6u);
    for (const bool byBlock : {true, false}) { // the second run begins again
        ASSERT_EQ(gate.Start(), 0);
        std::vector<int16_t> samples(4);
        uint32_t frames = 4;
        EXPECT_EQ(byBlock ? gate.ReadBlock(samples.data(), &frames)
                          : gate.ReadChannel(samples.data(), &frames, 2),
                  0);
        EXPECT_EQ(frames, 3u);
        EXPECT_THAT(samples, ElementsAre(2, 4, 6, 0));
    }
    gate.Stop();
    EXPECT_THAT(ReadAllFloats(gate, 2), ElementsAre(2, 4, 6)); // analyses by itself
}

TEST(NoiseGateStream, CountsWhatItsSourceDelivered) {
    struct PromisingStream : MemoryStream {
        PromisingStream() : MemoryStream(Format(kRate, 16, 1), Int16Bytes({1, 2, 3})) {
            numSamples = 1000;
        }
    };
    const auto source = counted_ptr<MemoryStream>::Adopt(new PromisingStream);
    NonRTDBNoiseGateStream gate;
    ASSERT_EQ(gate.Instantiate(source.get(), 1, -120, 0, 0, 1, 0), 0);
    EXPECT_EQ(gate.GetNumSamples(), 1000u);
    ASSERT_EQ(gate.Start(), 0);
    EXPECT_EQ(gate.GetNumSamples(), 3u);
    EXPECT_THAT(ReadAllFloats(gate, 100), ElementsAre(1, 2, 3));
}

// A recording that is analysed again is gated as it was, whatever the stage before it is now.
TEST(NoiseGateStream, KeepsTheThresholdThatItFound) {
    const auto loud = MonoStream(kRate, Stretches({{500, 10000}, {500, 3000}}));
    NonRTDBNoiseGateStream gate;
    ASSERT_EQ(gate.Instantiate(loud.get(), 1, 0.0f, 0.9f, 0, 0, 0), 0);
    EXPECT_EQ(Peak(ReadAllFloats(gate, 1000), 500, 1000), 0.0f);
    const auto even = MonoStream(kRate, Stretches({{1000, 3000}})); // its own would be 3000
    ASSERT_EQ(gate.SetSourceStream(even.get()), 0);
    ASSERT_EQ(gate.Start(), 0);
    EXPECT_EQ(Peak(ReadAllFloats(gate, 1000), 0, 1000), 0.0f);
}

TEST(NoiseGateStream, PassesFailuresOn) {
    const auto source = MonoStream(kRate, {1, 2, 3});
    NonRTDBNoiseGateStream gate;
    ASSERT_EQ(gate.Instantiate(source.get(), 1, -90, 0, 0, 0, 0), 0);
    source->readsUntilFailure = 0;
    float samples[3] = {};
    uint32_t frames = 3;
    EXPECT_EQ(gate.ReadChannelFloat(samples, &frames, 1), kInvalidFile);
    EXPECT_EQ(frames, 0u);
    NonRTDBNoiseGateStream unconnected;
    EXPECT_EQ(unconnected.Start(), kInvalidArgument);
}

} // namespace
} // namespace tessarin
