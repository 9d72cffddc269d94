#include "apps/train/pause_edges.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "model/phoneme_alphabet.h"

namespace tessarin::training {
namespace {

size_t Phone(std::string_view label) {
    return static_cast<size_t>(FindPhonemeSymbol(label) - PhonemeAlphabet().data());
}

/// A second of speech at 60 dB that fades from 400 to 500 ms to a rest at 20 dB, and is back at
/// 800 ms.
recording Speech() {
    recording speech{std::vector<float>(16000), 16000.0};
    for (size_t i = 0; i < speech.samples.size(); ++i) {
        const double ms = static_cast<double>(i) / 16.0;
        const double db =
            ms < 800.0 ? 60.0 - 40.0 * std::clamp((ms - 400.0) / 100.0, 0.0, 1.0) : 60.0;
        speech.samples[i] = static_cast<float>((i % 2 == 0 ? 1.0 : -1.0) * std::pow(10.0, db / 20));
    }
    return speech;
}

std::vector<phone_interval> Moved(double from_ms, double to_ms, std::string_view next,
                                  const recording& speech = Speech()) {
    std::vector<phone_interval> phones = {
        {0.0, from_ms, Phone("IY")}, {from_ms, to_ms, kSilencePhone}, {to_ms, 1000.0, Phone(next)}};
    MovePauseEdges(speech, phones);
    EXPECT_EQ(phones[0].end_ms, phones[1].start_ms);
    EXPECT_EQ(phones[1].end_ms, phones[2].start_ms);
    return phones;
}

TEST(MovePauseEdges, SpeechLastsToAThirdOfTheFall) {
    EXPECT_NEAR(Moved(420.0, 800.0, "s")[1].start_ms, 467.0, 5.0);
    EXPECT_EQ(Moved(480.0, 800.0, "s")[1].start_ms, 480.0); // what ends silently keeps its end
}

TEST(MovePauseEdges, SpeechBeginsAtTheRiseAndAStopALittleBefore) {
    EXPECT_NEAR(Moved(470.0, 760.0, "s")[1].end_ms, 800.0, 5.0);
    EXPECT_NEAR(Moved(470.0, 850.0, "s")[1].end_ms, 800.0, 5.0);
    EXPECT_NEAR(Moved(470.0, 750.0, "p")[1].end_ms, 785.0, 5.0);
    EXPECT_NEAR(Moved(470.0, 850.0, "p")[1].end_ms, 785.0, 5.0);
}

TEST(MovePauseEdges, LeavesWhatCannotBeTold) {
    EXPECT_EQ(Moved(420.0, 470.0, "s")[1].start_ms, 420.0); // too short to come to rest
    recording even = Speech();
    std::ranges::fill(even.samples, 100.0f);
    EXPECT_EQ(Moved(420.0, 760.0, "s", even)[1].start_ms, 420.0);
    EXPECT_EQ(Moved(420.0, 760.0, "s", even)[1].end_ms, 760.0);
    EXPECT_EQ(Moved(420.0, 760.0, "s", {{}, 16000.0})[1].end_ms, 760.0);
}

} // namespace
} // namespace tessarin::training
