#include "mouth/loudness.h"

#include <cmath>
#include <cstring>
#include <numbers>

#include <gmock/gmock.h>

#include "mouth/voice_level.h"

namespace {

using tessarin::LoudnessCurve;
using tessarin::MeasureLoudness;
using tessarin::VoiceLevels;

std::vector<int16_t> Tone(size_t count, double amplitude, double offset, uint32_t rateHz) {
    std::vector<int16_t> samples(count);
    for (size_t i = 0; i < count; ++i) {
        const double phase = 2 * std::numbers::pi * 400 * static_cast<double>(i) / rateHz;
        samples[i] = static_cast<int16_t>(std::lround(amplitude * std::sin(phase) + offset));
    }
    return samples;
}

tessarin_phoneme Phoneme(const char* label, int32_t startMs, int32_t endMs, float score = 0) {
    tessarin_phoneme phoneme{startMs, endMs, score, {}};
    std::strncpy(phoneme.label, label, sizeof phoneme.label - 1);
    return phoneme;
}

TEST(Loudness, IsThePowerOfEachStepAboutItsMean) {
    const std::vector<int16_t> tone = Tone(16000, 16384, 3000, 16000);
    const std::vector<float> steps = MeasureLoudness(tone, 16000);
    ASSERT_EQ(steps.size(), 100u);
    for (const float db : steps) {
        EXPECT_EQ(db, -9.0f); // half of full scale, and a sine has 3 dB less than a square
    }
    EXPECT_THAT(MeasureLoudness(std::vector<int16_t>(200), 16000),
                testing::ElementsAre(-100.0f, -100.0f))
        << "a step that has only begun counts";
    EXPECT_THAT(MeasureLoudness({}, 16000), testing::IsEmpty());
    EXPECT_THAT(MeasureLoudness(tone, 99), testing::IsEmpty());
}

TEST(Loudness, BlocksOfWholeSecondsJoin) {
    constexpr uint32_t kRateHz = 11025; // whose steps are not whole samples
    std::vector<int16_t> samples(3 * kRateHz + 777);
    uint32_t noise = 1;
    for (int16_t& sample : samples) {
        noise = noise * 1664525 + 1013904223;
        sample = static_cast<int16_t>(noise >> 18);
    }
    const std::vector<float> whole = MeasureLoudness(samples, kRateHz);
    std::vector<float> joined = MeasureLoudness(std::span(samples).first(2 * kRateHz), kRateHz);
    const std::vector<float> rest =
        MeasureLoudness(std::span(samples).subspan(2 * kRateHz), kRateHz);
    joined.insert(joined.end(), rest.begin(), rest.end());
    EXPECT_EQ(joined, whole);
}

TEST(VoiceLevels, CountAgainstTheVoiceAndNotFullScale) {
    const std::vector<tessarin_phoneme> phonemes = {
        Phoneme("x", 0, 100),      Phoneme("AA", 100, 200), Phoneme("t", 200, 300),
        Phoneme("IY", 300, 400),   Phoneme("x", 400, 2000), Phoneme("s", 2000, 2100),
        Phoneme("AA", 2100, 2200), Phoneme("m", 2200, 2300)};
    std::vector<float> loudness(230, -70.0f);
    std::fill_n(loudness.begin() + 10, 10, -20.0f);
    std::fill_n(loudness.begin() + 30, 10, -24.0f);
    std::fill_n(loudness.begin() + 210, 10, -60.0f); // whispered
    const VoiceLevels levels(phonemes, LoudnessCurve(loudness));
    for (float& db : loudness) {
        db -= 30.0f;
    }
    const VoiceLevels farther(phonemes, LoudnessCurve(loudness));
    EXPECT_EQ(farther.GetLevels(), levels.GetLevels());
    EXPECT_NEAR(farther.GetUsualDb(), levels.GetUsualDb() - 30.0f, 0.01f);

    const std::vector<float>& level = levels.GetLevels();
    EXPECT_GT(level[1], level[3]);
    EXPECT_GT(level[3], level[6]);
    EXPECT_GT(level[6], 0.5f) << "a whisper opens the mouth more than it rests";
    EXPECT_EQ(level[2], 1.0f) << "a stop is not half silent because it is soft";
    EXPECT_LT(level[5], 0.7f);
    EXPECT_EQ(level[7], 1.0f) << "lips close fully, whispered or not";
}

TEST(VoiceLevels, FollowScoresWithoutALoudness) {
    const std::vector<tessarin_phoneme> phonemes = {
        Phoneme("AA", 0, 100, 80), Phoneme("AA", 100, 300, 40), Phoneme("AA", 300, 400, 10)};
    const VoiceLevels levels(phonemes, LoudnessCurve({}));
    EXPECT_GT(levels.GetLevels()[0], levels.GetLevels()[1]);
    EXPECT_GT(levels.GetLevels()[1], levels.GetLevels()[2]);
    EXPECT_EQ(levels.GetLevels()[1], tessarin::OpeningOf(0.0f));
}

} // namespace
