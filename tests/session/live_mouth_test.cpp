#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mouth/loudness.h"
#include "session/live_mouth.h"
#include "tessarin/owned.h"

namespace {

using namespace tessarin;
using testing::ElementsAre;

struct sound {
    const char* label;
    int32_t start;
    int32_t end;
    float score = 50.0f;
};

results_owner Flush(const std::vector<sound>& sounds) {
    ISyncResultsCollection* made = nullptr;
    EXPECT_EQ(CreateSyncResultsCollection(0, &made), kNoError);
    results_owner flush(made);
    for (const sound& each : sounds) {
        CSyncMarker marker{};
        marker.type = kPhonemeMarker;
        marker.start = each.start;
        marker.end = each.end;
        marker.score = each.score;
        std::string(each.label).copy(marker.label, sizeof marker.label - 1);
        flush->add_marker(marker);
    }
    return flush;
}

std::vector<std::string> Lines(const live_stretch& stretch) {
    std::vector<std::string> lines;
    for (const tessarin_live_phoneme& each : stretch.phonemes) {
        lines.push_back(std::string(each.label) + " " + std::to_string(each.start_ms) + " " +
                        std::to_string(each.end_ms) + " " +
                        std::to_string(static_cast<int>(each.score)));
    }
    return lines;
}

TEST(LiveMouth, ASoundOnTheBorderOfFlushesIsOne) {
    LiveLoudness loudness;
    LiveMouth mouth;
    ASSERT_EQ(mouth.Open({}, loudness), kNoError);
    live_stretch stretch;
    // Times of a flush count from its first marker, wherever that stands.
    mouth.Add(*Flush({{"AA", 40, 140}, {"s", 140, 240, 20}}), 200, 0);
    ASSERT_EQ(mouth.TakeFinal(false, stretch), kNoError);
    EXPECT_THAT(Lines(stretch), ElementsAre("AA 0 100 50")) << "the last one may go on";
    mouth.Add(*Flush({{"s", 0, 300, 60}, {"x", 300, 400}}), 400, 0);
    ASSERT_EQ(mouth.TakeFinal(false, stretch), kNoError);
    EXPECT_EQ(stretch.startMs, 200);
    EXPECT_EQ(stretch.endMs, 600);
    EXPECT_THAT(Lines(stretch), ElementsAre("s 100 500 50")) << "weighted by length";
    // The tail of a flush was in the one before; what is heard beyond the end is ignored.
    mouth.SetEnd(700);
    mouth.Add(*Flush({{"m", 0, 50}, {"AA", 50, 400}}), 400, 50);
    ASSERT_EQ(mouth.TakeFinal(true, stretch), kNoError);
    EXPECT_EQ(stretch.endMs, 700);
    EXPECT_THAT(Lines(stretch), ElementsAre("x 500 600 50", "AA 600 700 50"));
}

TEST(LiveMouth, FollowsTheVoiceAtAnyLevel) {
    const auto mostOpen = [](int16_t amplitude) {
        LiveLoudness loudness;
        loudness.Open(16000);
        LiveMouth mouth;
        EXPECT_EQ(mouth.Open({}, loudness), kNoError);
        live_stretch stretch;
        double most = 0;
        for (int second = 0; second < 6; ++second) {
            std::vector<int16_t> samples(16000);
            for (size_t i = 0; i < samples.size(); ++i) {
                samples[i] = i / 20 % 2 == 0 ? amplitude : static_cast<int16_t>(-amplitude);
            }
            loudness.Push(samples);
            mouth.Add(*Flush({{"s", 0, 500}, {"AA", 500, 1000}}), 1000, 0);
            EXPECT_EQ(mouth.TakeFinal(false, stretch), kNoError);
            most = 0;
            for (const tessarin_live_frame& frame : stretch.frames) {
                const bool isOpen = std::string_view(frame.weights[0].label) == "AA";
                most = std::max(most, isOpen ? static_cast<double>(frame.weights[0].weight) : 0.0);
            }
        }
        return most;
    };
    EXPECT_NEAR(mostOpen(8000), 0.88, 0.05);
    EXPECT_NEAR(mostOpen(250), 0.88, 0.05);
}

TEST(LiveLoudness, IsThatOfTheWholeWhateverTheBlocks) {
    std::vector<int16_t> samples(30000);
    uint32_t noise = 1;
    for (int16_t& sample : samples) {
        noise = noise * 1664525 + 1013904223;
        sample = static_cast<int16_t>(noise >> 17);
    }
    LiveLoudness loudness;
    loudness.Open(11025);
    for (size_t at = 0; at < samples.size(); at += 37) {
        loudness.Push(std::span(samples).subspan(at, std::min<size_t>(37, samples.size() - at)));
    }
    std::vector<float> whole = MeasureLoudness(samples, 11025);
    std::vector<float> steps;
    loudness.CopyFrom(0, steps);
    whole.resize(steps.size()); // the last step is not complete
    EXPECT_EQ(steps, whole);
    loudness.CopyFrom(1000, steps);
    EXPECT_EQ(steps, std::vector<float>(whole.begin() + 100, whole.end()));
}

TEST(LiveMouth, FramesOfAnyRateFollowWithoutGaps) {
    LiveLoudness loudness;
    LiveMouth mouth;
    ASSERT_EQ(mouth.Open({23.976f, 20, {}}, loudness), kNoError);
    int64_t reachedMs = 0;
    for (int second = 0; second < 330; ++second) {
        mouth.Add(*Flush({{"AA", 0, 500}, {"s", 500, 1000}}), 1000, 0);
        live_stretch stretch;
        ASSERT_EQ(mouth.TakeFinal(false, stretch), kNoError);
        for (const tessarin_live_frame& frame : stretch.frames) {
            ASSERT_EQ(frame.start_ms, reachedMs);
            ASSERT_NEAR(static_cast<double>(frame.end_ms - frame.start_ms), 41.7, 0.8);
            reachedMs = frame.end_ms;
        }
    }
    EXPECT_GT(reachedMs, 329'000);
}

TEST(LiveMouth, AfterWeeksFramesAreAsAfterMinutes) {
    constexpr int32_t kHourMs = 3'600'000;
    constexpr int64_t kWeeksMs = int64_t{600} * kHourMs; // more than 32 bits hold
    // What follows a silence, with times that count from its end.
    const auto hearAfter = [](int64_t silenceMs) {
        LiveLoudness loudness;
        LiveMouth mouth;
        EXPECT_EQ(mouth.Open({1.0f, 20, {}}, loudness), kNoError);
        live_stretch stretch;
        while (mouth.GetHeardMs() < silenceMs) {
            const auto ms = std::min<int64_t>(kHourMs, silenceMs - mouth.GetHeardMs());
            mouth.Add(*Flush({{"x", 0, static_cast<int32_t>(ms)}}), ms, 0);
            EXPECT_EQ(mouth.TakeFinal(false, stretch), kNoError);
        }
        mouth.Add(*Flush({{"m", 0, 1000}, {"AA", 1000, 2600}, {"s", 2600, 5000}}), 5000, 0);
        EXPECT_EQ(mouth.TakeFinal(true, stretch), kNoError);
        std::vector<std::string> lines = Lines(stretch);
        EXPECT_EQ(lines.front(), "x 0 " + std::to_string(silenceMs) + " 50");
        lines.clear();
        for (const tessarin_live_frame& frame : stretch.frames) {
            std::string& line = lines.emplace_back(std::to_string(frame.start_ms - silenceMs));
            for (int32_t i = 0; i < frame.count; ++i) {
                line += std::string(" ") + frame.weights[i].label + " " +
                        std::to_string(frame.weights[i].weight);
            }
        }
        return lines;
    };
    const std::vector<std::string> soon = hearAfter(400'000);
    EXPECT_GE(soon.size(), 5u);
    EXPECT_EQ(hearAfter(kWeeksMs), soon);
}

} // namespace
