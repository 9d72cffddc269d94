#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <set>

#include "articulation/closures.h"
#include "articulation/frames_from_envelopes.h"
#include "sounds.h"

namespace tessarin::test {
namespace {

using weights = std::map<std::string, float>;

phoneme_mixture Mixture(const weights& parts) {
    phoneme_mixture mixture;
    for (const auto& [label, weight] : parts) {
        mixture[phoneme_label(label)] = weight;
    }
    return mixture;
}

weights Parts(const phoneme_mixture& mixture) {
    weights parts;
    for (const auto& entry : mixture) {
        parts[entry.label.Text()] = entry.weight;
    }
    return parts;
}

const std::set<phoneme_label> kClosed = {phoneme_label("b"), phoneme_label("m")};

/// Frames of 10 ms, in which the sounds are to be seen as closures.
std::vector<weights> Forced(const std::vector<sound>& list, const std::vector<weights>& before,
                            int32_t wanted = 2) {
    phn_marker_list phonemes;
    for (const sound& s : list) {
        phonemes.emplace_back(s.start, s.end, std::string(s.label), s.score);
    }
    std::vector<phoneme_mixture> frames;
    for (const weights& parts : before) {
        frames.push_back(Mixture(parts));
    }
    ForceClosures(phonemes, kClosed, 10.0f, wanted, frames);
    std::vector<weights> after;
    for (const phoneme_mixture& frame : frames) {
        after.push_back(Parts(frame));
    }
    return after;
}

const weights kOpen = {{"AA", 0.7f}, {"s", 0.3f}};
const weights kWeak = {{"AA", 0.5f}, {"b", 0.2f}, {"x", 0.3f}};
const weights kClear = {{"b", 0.5f}, {"x", 0.5f}};

TEST(EnforceClosures, AHiddenClosureIsShownInThreeFramesAroundItsPeak) {
    // The first of equal frames is the peak, and nothing before the closure's frames is touched.
    const auto atItsBegin = Forced({{"b", 10, 50}}, std::vector<weights>(5, kWeak));
    for (int i : {1, 2}) {
        EXPECT_EQ(atItsBegin[i].at("AA"), 0.0f);
        EXPECT_NEAR(atItsBegin[i].at("b"), 0.4f, 1e-6f);
        EXPECT_NEAR(atItsBegin[i].at("x"), 0.6f, 1e-6f);
    }
    for (int i : {0, 3, 4}) {
        EXPECT_EQ(atItsBegin[i], kWeak);
    }
    const auto forced = Forced(
        {{"b", 10, 50}}, {kWeak, kWeak, {{"AA", 0.2f}, {"b", 0.4f}, {"x", 0.4f}}, kWeak, kWeak});
    EXPECT_EQ(forced[0], kWeak);
    for (int i : {1, 2, 3}) {
        EXPECT_EQ(forced[i].at("AA"), 0.0f);
        EXPECT_NEAR(forced[i].at("b") + forced[i].at("x"), 1.0f, 1e-6f);
    }
    EXPECT_EQ(forced[4], kWeak);
}

TEST(EnforceClosures, LeavesAloneWhatIsClearOrCannotBeShown) {
    const std::vector<weights> clear = {kWeak, kClear, kClear, kClear, kWeak};
    EXPECT_EQ(Forced({{"b", 0, 50}}, clear), clear);
    const std::vector<weights> open(5, kOpen);
    EXPECT_EQ(Forced({{"b", 0, 50}}, open), open);
    const std::vector<weights> weak(5, kWeak);
    EXPECT_EQ(Forced({{"b", 16, 24}}, weak), weak); // between two frames
    EXPECT_EQ(Forced({{"s", 0, 50}}, weak), weak);
    EXPECT_EQ(Forced({{"b", 70, 90}}, weak), weak); // after the list
}

TEST(EnforceClosures, NeighbouringClosuresAreOne) {
    const weights kBoth = {{"AA", 0.2f}, {"b", 0.3f}, {"m", 0.5f}};
    const auto forced = Forced({{"b", 0, 20}, {"m", 20, 40}}, std::vector<weights>(4, kBoth), 9);
    for (const weights& frame : forced) {
        EXPECT_NEAR(frame.at("b"), 0.375f, 1e-6f);
        EXPECT_EQ(frame.at("AA"), 0.0f);
    }
}

TEST(EnforceClosures, NothingIsDividedByNothing) {
    const weights kSilenced = {{"b", 0.0f}, {"AA", 1.0f}};
    const auto forced = Forced({{"b", -100, 50}}, {kSilenced, kWeak, kSilenced, kWeak, kWeak});
    EXPECT_EQ(forced[0], (weights{{"b", 0.0f}, {"AA", 0.0f}}));
    EXPECT_EQ(forced[1].at("AA"), 0.0f);
}

TEST(FramesFromEnvelopes, SamplesCurvesAndFillsWithSilence) {
    envelope_point b[] = {{10, 20, 0.0f}, {20, 30, 0.5f}, {30, 60, 1.0f}};
    envelope_point s[] = {{15, 30, 2.0f}};
    const articulation_envelope envelopes[] = {{"b", 10, 60, 3, b}, {"s", 15, 30, 1, s}};
    const auto frames = SampleEnvelopes(envelopes, 10.0f);
    ASSERT_EQ(frames.size(), 6u);
    EXPECT_TRUE(frames[0].IsEmpty()); // below the lowest
    EXPECT_EQ(Parts(frames[1]), (weights{{"b", 0.0f}, {"x", 1.0f}}));
    EXPECT_EQ(Parts(frames[2]), (weights{{"b", 0.2f}, {"s", 0.8f}}));
    EXPECT_EQ(Parts(frames[3]), (weights{{"b", 1.0f}}));
    EXPECT_EQ(Parts(frames[5]), (weights{{"b", 1.0f}}));
}

TEST(FramesFromEnvelopes, OnlyTheLastFrameOfAPointCountsForTheLowest) {
    envelope_point b[] = {{0, 30, 1.0f}};
    const articulation_envelope envelope = {"b", 0, 30, 1, b};
    const auto frames = SampleEnvelopes({&envelope, 1}, 10.0f);
    ASSERT_EQ(frames.size(), 3u);
    EXPECT_TRUE(frames[1].IsEmpty());
    EXPECT_FALSE(frames[2].IsEmpty());
}

TEST(FramesFromEnvelopes, IgnoresWhatLiesBeforeTheAudioOrBehindAllThatIsMade) {
    constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
    constexpr int32_t kMax = std::numeric_limits<int32_t>::max();
    envelope_point b[] = {{kMin, 30, 1.0f}, {-50, -10, 1.0f}, {kMax, kMin, std::nanf("")}};
    const articulation_envelope envelope = {"b", 0, 30, 3, b};
    EXPECT_LE(SampleEnvelopes({&envelope, 1}, 10.0f).size(), 50u);
    envelope_point far[] = {{kMin, kMax, 1.0f}};
    const articulation_envelope long_envelope = {"b", kMin, kMax, 1, far};
    EXPECT_NEAR(static_cast<double>(SampleEnvelopes({&long_envelope, 1}, 100000.0f).size()), 21474,
                10);
    for (const float frameMs : {0.0f, -1.0f, std::nanf(""), HUGE_VALF}) {
        EXPECT_LE(SampleEnvelopes({&long_envelope, 1}, frameMs).size(), 1u);
    }
}

/// Consonants, vowels and closures as they come in speech, from time 0, and silence at the end.
std::vector<sound> RandomSpeech(std::mt19937& random) {
    static const char* const labels[] = {"x", "b", "AA", "s", "m", "IY", "t", "OW", "p", "n"};
    std::vector<sound> list;
    for (int32_t time = 0; time < 3000;) {
        const int32_t length = 20 + static_cast<int32_t>(random() % 130);
        list.push_back(
            {labels[random() % 10], time, time + length, static_cast<float>(40 + random() % 61)});
        time += length;
    }
    list.push_back({"x", list.back().end, list.back().end + 500});
    return list;
}

TEST(SmoothFrames, WeightsSumToOneAndChangeSlowlyButForSilenceAndClosures) {
    std::mt19937 random(3);
    const std::set<std::string> snapping = {"x", "b", "p", "m", "v", "f"};
    for (int run = 0; run < 30; ++run) {
        SCOPED_TRACE(run);
        CPhonemeMixtureArticulator articulator;
        articulator.SetFlags(kSmoothFrames);
        articulator.SetFrameRate(run % 2 ? 60.0f : 30.0f);
        sounds results(RandomSpeech(random));
        ASSERT_EQ(articulator.GenerateArticulations(&results, nullptr), kNoError);
        EXPECT_EQ(articulator.GetEnvelopesBegin(), nullptr);
        const articulation* begin = articulator.GetArticulationsBegin();
        ASSERT_NE(begin, nullptr);
        for (const articulation* frame = begin; frame != articulator.GetArticulationsEnd();
             ++frame) {
            float sum = 0.0f;
            for (const auto& [label, weight] : Weights(*frame)) {
                sum += weight;
            }
            EXPECT_NEAR(sum, 1.0f, 1e-5f);
            if (frame == begin) {
                continue;
            }
            EXPECT_EQ(frame->start, frame[-1].end);
            weights previous = Weights(frame[-1]);
            for (auto& [label, weight] : Weights(*frame)) {
                previous[label] -= weight;
            }
            for (const auto& [label, change] : previous) {
                if (!snapping.contains(label)) {
                    EXPECT_LE(std::abs(change), 0.2501f) << label << ' ' << frame->start;
                }
            }
        }
    }
}

TEST(SmoothFrames, TheLastCurveIsCompressedAndLosesTheMiddleOfItsPlateau) {
    ruled_articulator articulator("framerate 100\ns .5 0 0\nx .5 0 0\n");
    articulator.SetFlags(kSmoothFrames);
    articulator.SetEnvelopeSlope(1.0f);
    const auto frames = articulator.Frames({{"s", 0, 50}});
    ASSERT_EQ(frames.size(), 6u);
    EXPECT_EQ(Weights(frames[0]), (weights{{"s", 1.0f}}));
    EXPECT_EQ(Weights(frames[2]), (weights{{"x", 1.0f}}));
    EXPECT_EQ(Weights(frames[4]), (weights{{"s", 1.0f}}));
}

TEST(SmoothFrames, AFlagOfTheRulesTurnsItOff) {
    std::mt19937 random(4);
    const std::vector<sound> list = RandomSpeech(random);
    const std::string rules = "framerate 30\nbmp 1 50 50\nAAIYOWstnx .7 50 50\nclosed bmp\n";
    ruled_articulator plain(rules), smooth(rules), refused(rules + "no_af_phn_smooth\n");
    smooth.SetFlags(kSmoothFrames);
    refused.SetFlags(kSmoothFrames);
    const auto frames = plain.Frames(list);
    const auto refusedFrames = refused.Frames(list);
    bool differs = false;
    const auto smoothFrames = smooth.Frames(list);
    for (size_t i = 0; i < frames.size(); ++i) {
        EXPECT_EQ(Weights(frames[i]), Weights(refusedFrames[i]));
        differs |= Weights(frames[i]) != Weights(smoothFrames[i]);
    }
    EXPECT_TRUE(differs);
}

TEST(SmoothFrames, LooksForClosuresByTheTimeOfTheAudioWhereverTheResultBegins) {
    // The list begins with the first frame of the result, and closures count from time 0.
    const std::string rules = "framerate 100\nb .2 0 0\ns .5 50 50\nclosed b\nx .5 50 50\n";
    const auto closedFrames = [&](int32_t shift) {
        ruled_articulator articulator(rules);
        articulator.SetFlags(kSmoothFrames);
        int count = 0;
        for (const articulation& frame : articulator.Frames({{"s", shift, shift + 100},
                                                             {"b", shift + 100, shift + 120},
                                                             {"s", shift + 120, shift + 220}})) {
            count += Weights(frame).contains("b") && !Weights(frame).contains("s");
        }
        return count;
    };
    EXPECT_GT(closedFrames(0), 0);
    EXPECT_EQ(closedFrames(1000), 0);
}

TEST(Envelopes, KeysOfSmoothedSpeechRiseInTime) {
    std::mt19937 random(5);
    for (const uint32_t flags : {0u, 1u, 3u}) {
        CPhonemeMixtureArticulator articulator;
        articulator.SetFlags(flags);
        sounds results(RandomSpeech(random));
        articulator.GenerateArticulations(&results, nullptr);
        ASSERT_EQ(articulator.GenerateEnvelopes(), kNoError);
        ASSERT_NE(articulator.GetEnvelopesBegin(), nullptr);
        int32_t start = std::numeric_limits<int32_t>::min();
        for (auto* e = articulator.GetEnvelopesBegin(); e != articulator.GetEnvelopesEnd(); ++e) {
            EXPECT_GE(e->start, start);
            start = e->start;
            for (int32_t i = 1; i < e->count; ++i) {
                EXPECT_GT(e->points[i].t1, e->points[i - 1].t1);
            }
        }
    }
}

} // namespace
} // namespace tessarin::test
