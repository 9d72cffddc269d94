#include "apps/train/speech_changes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace tessarin::training {
namespace {

constexpr double kRate = 16000.0;

recording Tone(double hertz, size_t count = 16000) {
    recording tone{std::vector<float>(count), kRate};
    for (size_t i = 0; i < count; ++i) {
        tone.samples[i] = static_cast<float>(
            1000.0 * std::sin(2.0 * std::numbers::pi * hertz * static_cast<double>(i) / kRate));
    }
    return tone;
}

/// Level in decibels of the recording's middle, where filters have settled.
double LevelDb(const recording& speech) {
    double sum = 0.0;
    const size_t margin = speech.samples.size() / 4;
    for (size_t i = margin; i < speech.samples.size() - margin; ++i) {
        sum += std::pow(static_cast<double>(speech.samples[i]), 2.0);
    }
    return 10.0 * std::log10(sum / static_cast<double>(speech.samples.size() - 2 * margin));
}

TEST(ChangeSpeed, MovesATone) {
    for (const double speed : {0.84, 1.0, 1.16}) {
        const recording changed = ChangeSpeed(Tone(1000.0), speed);
        ASSERT_EQ(changed.samples.size(), static_cast<size_t>(16000.0 / speed));
        const recording expected = Tone(1000.0 * speed, changed.samples.size());
        for (size_t i = 100; i + 100 < changed.samples.size(); ++i) {
            ASSERT_NEAR(changed.samples[i], expected.samples[i], 5.0f) << speed << ", " << i;
        }
    }
}

TEST(ChangeSpeed, LetsNothingThroughThatWouldFoldOver) {
    EXPECT_LT(LevelDb(ChangeSpeed(Tone(7600.0), 1.16)), LevelDb(Tone(7600.0)) - 20.0);
}

TEST(BandLimitToTelephone, KeepsThePassband) {
    const struct {
        double hertz, lowestDb, highestDb;
    } cases[] = {{1000, -0.5, 0.5},
                 {300, -3.5, -2.5},
                 {3400, -3.5, -2.5},
                 {60, -100, -24},
                 {6000, -200, -20}};
    for (const auto& expected : cases) {
        recording tone = Tone(expected.hertz);
        const double before = LevelDb(tone);
        BandLimitToTelephone(tone);
        EXPECT_GE(LevelDb(tone) - before, expected.lowestDb) << expected.hertz;
        EXPECT_LE(LevelDb(tone) - before, expected.highestDb) << expected.hertz;
    }
}

TEST(AddNoise, KeepsItsDistanceFromTheSpeech) {
    const std::vector<recording> voices = {Tone(500.0, 9000), Tone(700.0, 7000)};
    for (const noise_kind kind : {noise_kind::kWhite, noise_kind::kPink, noise_kind::kRumble,
                                  noise_kind::kHum, noise_kind::kBabble}) {
        recording speech = Tone(1000.0);
        speech.samples.resize(48000, 0.0f); // pauses do not count
        const recording before = speech;
        random_source random("name", 1);
        AddNoise(speech, kind, 12.0, 0.0, voices, random);
        recording noise = speech;
        for (size_t i = 0; i < noise.samples.size(); ++i) {
            noise.samples[i] -= before.samples[i];
        }
        EXPECT_NEAR(LevelDb(noise), LevelDb(Tone(1000.0)) - 12.0, 2.5) << static_cast<int>(kind);
    }
}

TEST(ChangeSpeech, IsAsNoisyAsItIsTold) {
    recording speech = Tone(300.0);
    speech.samples.insert(speech.samples.begin(), 8000, 0.0f);
    const auto pauseEnergy = [&](const noise_shares& shares, uint64_t number) {
        random_source random("pause", number);
        const recording copy = ChangeSpeech(speech, {}, shares, random).speech;
        double energy = 0.0;
        for (size_t i = 0; i < 6000; ++i) { // before the tone, however fast
            energy += std::pow(static_cast<double>(copy.samples[i]), 2.0);
        }
        return energy;
    };
    for (uint64_t number = 1; number <= 8; ++number) {
        EXPECT_EQ(pauseEnergy({1.0, 1.0}, number), 0.0);
        EXPECT_GT(pauseEnergy({1.0, 0.0}, number), pauseEnergy({0.0, 0.0}, number));
    }
}

TEST(ChangeSpeech, HangsOnTheNameAndTheNumberOfTheCopy) {
    const auto copy = [](const char* name, uint64_t number) {
        random_source random(name, number);
        return ChangeSpeech(Tone(300.0), {}, {0.5, 0.0}, random).speech.samples;
    };
    EXPECT_EQ(copy("a", 1), copy("a", 1));
    EXPECT_NE(copy("a", 1), copy("a", 2));
    EXPECT_NE(copy("a", 1), copy("b", 1));
}

} // namespace
} // namespace tessarin::training
