#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "c_api/flat_fixture.h"
#include "tessarin/owned.h"

namespace {

using namespace tessarin::flat;
using namespace tessarin::test;
using tessarin::Out;

constexpr double kPi = 3.14159265358979323846;
constexpr uint32_t kRateHz = 16000;

/// Half a second of pause and half a second of a tone, each with its amplitude, held to `most`.
std::vector<int16_t> PauseAndTone(double pause, double tone, int most = 32767) {
    std::vector<int16_t> samples(kRateHz);
    for (size_t i = 0; i < samples.size(); ++i) {
        const double amplitude = i < samples.size() / 2 ? pause : tone;
        const double value =
            amplitude * std::sin(2 * kPi * 200.0 * static_cast<double>(i) / kRateHz);
        samples[i] = static_cast<int16_t>(std::fmax(-most, std::fmin(most, std::nearbyint(value))));
    }
    return samples;
}

tessarin_audio_facts Measure(const std::vector<int16_t>& samples) {
    audio_owner audio;
    EXPECT_EQ(tessarin_create_audio_from_int16(
                  samples.data(), static_cast<uint32_t>(samples.size()), kRateHz, Out(audio)),
              TESSARIN_OK);
    tessarin_audio_facts facts{};
    EXPECT_EQ(tessarin_measure_audio(audio.get(), &facts), TESSARIN_OK);
    return facts;
}

TEST(AudioFacts, LevelsAreThoseOfTheSpeechAndOfThePause) {
    const tessarin_audio_facts facts = Measure(PauseAndTone(100.0, 10000.0));
    EXPECT_EQ(facts.duration_ms, 1000);
    EXPECT_EQ(facts.rate_hz, kRateHz);
    const auto db = [](double amplitude) { return 20.0 * std::log10(amplitude / 32768.0); };
    const double rms = std::sqrt(0.5);
    EXPECT_NEAR(facts.level_db, db(10000.0 * rms), 0.1); // the pause does not lower it
    EXPECT_NEAR(facts.noise_db, db(100.0 * rms), 0.1);
    EXPECT_NEAR(facts.peak_db, db(10000.0), 0.1);
    EXPECT_EQ(facts.clip_count, 0u);
}

TEST(AudioFacts, AWaveThatIsCutOffIsClipped) {
    // 100 periods of 80 samples, whose tops and bottoms are beyond 80 % of the tone for
    // 2 (pi/2 - asin 0.8) / 2 pi of the period each: 16 samples.
    const tessarin_audio_facts facts = Measure(PauseAndTone(0.0, 20000.0, 16000));
    EXPECT_EQ(facts.clip_count, 200u);
    EXPECT_NEAR(facts.clipped_samples, 200 * 16.4, 200.0);
    // What is quiet has flat tops without having been cut.
    EXPECT_EQ(Measure(PauseAndTone(0.0, 3.0)).clip_count, 0u);
    EXPECT_EQ(Measure(std::vector<int16_t>(kRateHz, 20000)).clip_count, 0u);
}

TEST(AudioFacts, OfNothingAreSilence) {
    const tessarin_audio_facts facts = Measure({});
    EXPECT_EQ(facts.duration_ms, 0);
    EXPECT_EQ(facts.level_db, -100.0f);
    EXPECT_EQ(facts.peak_db, -100.0f);
    tessarin_audio_facts none{};
    EXPECT_EQ(tessarin_measure_audio(nullptr, &none), TESSARIN_INVALID_ARGUMENT);
}

class KnownWords : public FlatInterface {};

TEST_F(KnownWords, AreThoseOfTheLexiconAndOnesOwn) {
    language_owner own;
    ASSERT_EQ(tessarin_create_language_from_file((std::string(kData) + "/en-us.lexicon").c_str(),
                                                 Out(own)),
              TESSARIN_OK);
    const auto has = [&](const char* word) {
        int32_t is = -1;
        EXPECT_EQ(tessarin_has_word(own.get(), word, &is), TESSARIN_OK);
        return is;
    };
    EXPECT_EQ(has("hello"), 1);
    EXPECT_EQ(has("grobnik"), 0);
    ASSERT_EQ(tessarin_set_word(own.get(), "Grobnik", "grAAbnIHk"), TESSARIN_OK);
    EXPECT_EQ(has("grobnik"), 1);
    int32_t is = -1;
    EXPECT_EQ(tessarin_has_word(own.get(), "caf\xE9", &is), TESSARIN_INVALID_UTF8);
    EXPECT_EQ(tessarin_has_word(nullptr, "hello", &is), TESSARIN_INVALID_ARGUMENT);
    EXPECT_EQ(is, 0);
}

} // namespace
