#include "sounds.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tessarin::test {
namespace {

constexpr std::string_view kSimpleRules = "framerate 100\na .5 50 50\nb .5 50 50\nx .5 50 50\n";

std::vector<int32_t> Starts(const std::vector<articulation>& frames) {
    std::vector<int32_t> starts;
    for (const articulation& frame : frames) {
        starts.push_back(frame.start);
    }
    return starts;
}

TEST(Articulator, MakesAFrameForEachPeriodOfTheDefaultRules) {
    CPhonemeMixtureArticulator articulator;
    EXPECT_EQ(articulator.GetArticulationsBegin(), nullptr);
    sounds results({{"b", 0, 100}, {"AA", 100, 200}});
    ASSERT_EQ(articulator.GenerateArticulations(&results, nullptr), kNoError);
    const articulation* frame = articulator.GetArticulationsBegin();
    ASSERT_EQ(articulator.GetArticulationsEnd() - frame, 8);
    const int32_t times[] = {0, 33, 66, 100, 133, 166, 200, 233, 266};
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(frame[i].start, times[i]);
        EXPECT_EQ(frame[i].end, times[i + 1]);
    }
    EXPECT_EQ(Weights(frame[2]), (std::map<std::string, float>{{"b", 1.0f}})); // at 83 ms
    EXPECT_NEAR(Weights(frame[3])["b"],
                (50.0f - 16.0f) / 50.0f * 0.5f / ((50.0f - 16.0f) / 50.0f * 0.5f + 0.9f), 1e-6f);
}

TEST(Articulator, OpensAnOpeningVowelBehindAShortSilence) {
    struct {
        sound opening;
        size_t count;
        int32_t leadEnd;
    } const cases[] = {
        {{"AA", 0, 200, 51.0f}, 2, 83}, // a third of the attack
        {{"AA", 0, 90, 51.0f}, 2, 45},  // half of the vowel
        {{"AA", 0, 200, 50.0f}, 1, 200},
        {{"ER", 0, 200, 51.0f}, 1, 200},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.opening.label);
        CPhonemeMixtureArticulator articulator;
        sounds collection({c.opening});
        app_sync_results results;
        ReadSyncResults(collection, {}, false, results);
        articulator.GenerateArticulationFromSyncResults(results, nullptr, -1, 50);
        ASSERT_EQ(results.phonemes.size(), c.count);
        EXPECT_EQ(results.phonemes.front().end, c.leadEnd);
    }
}

TEST(Articulator, AVowelWithoutARuleGetsOneOfZerosAndALeadInOfNoLength) {
    ruled_articulator articulator("framerate 100\nx .5 50 50\n");
    EXPECT_THAT(Starts(articulator.Frames({{"AA", 0, 20}})), testing::ElementsAre(0, 10, 20));
}

TEST(Articulator, RanksTheFirstFrameAgainstTheLastOfTheRunBefore) {
    const char* text = "framerate 10\ns .5 1000 1000\nz .7 1000 1000\n";
    const std::vector<sound> list = {{"s", 0, 100}, {"z", 100, 200}};
    ruled_articulator fresh(text);
    fresh.SetMaxContributions(1);
    EXPECT_STREQ(fresh.Frames(list).front().entries[0].label, "z");
    ruled_articulator used(text);
    used.SetMaxContributions(1);
    used.Frames({{"s", 0, 100}});
    EXPECT_STREQ(used.Frames(list).front().entries[0].label, "s");
}

TEST(Articulator, APartIsWidenedByTheReachAndNotSmoothed) {
    const std::vector<sound> list = {{"a", 0, 1000}, {"b", 1000, 2000}, {"a", 2000, 3000}};
    ruled_articulator articulator(kSimpleRules);
    articulator.SetFlags(kSmoothFrames);
    sounds results(list);
    ASSERT_EQ(articulator.GenerateArticulations2(&results, nullptr, 1000, 1200), kNoError);
    const auto part = articulator.Frames();
    EXPECT_EQ(part.front().start, 900);
    EXPECT_EQ(part.back().end, 1310);
    EXPECT_EQ(articulator.GetFlags(), uint32_t{kSmoothFrames});
    articulator.SetFlags(0);
    const auto whole = articulator.Frames(list);
    for (size_t i = 0; i < part.size(); ++i) {
        EXPECT_EQ(Weights(part[i]), Weights(whole[90 + i]));
    }
}

TEST(Articulator, TheFrameRateOfTheHostOverridesTheRules) {
    CPhonemeMixtureArticulator articulator;
    sounds results({{"s", 0, 1000}});
    const auto countAt = [&](float rate) {
        articulator.SetFrameRate(rate);
        EXPECT_EQ(articulator.GenerateArticulations(&results, nullptr), kNoError);
        return articulator.GetArticulationsEnd() - articulator.GetArticulationsBegin();
    };
    EXPECT_EQ(countAt(0.0f), 30); // the default rules are loaded on the way
    EXPECT_EQ(countAt(50.0f), 50);
    articulator.LoadArticulatorRules(nullptr, 0);
    EXPECT_EQ(countAt(50.0f), 50);
    EXPECT_EQ(countAt(0.0f), 50);
    articulator.LoadArticulatorRules(nullptr, 0);
    EXPECT_EQ(countAt(std::nanf("")), 30);
}

TEST(Articulator, GainsAreForPhonemesOrForAll) {
    const auto silenceAt = [](const char* phonemes) {
        ruled_articulator articulator(kSimpleRules);
        articulator.SetGain(phonemes, 0.25f);
        return Weights(articulator.Frames({{"a", 0, 100, 50.0f}}).front())["x"];
    };
    EXPECT_EQ(silenceAt("b"), 0.5f);
    EXPECT_EQ(silenceAt("ba"), 0.25f);
    EXPECT_EQ(silenceAt(""), 0.25f);
    EXPECT_EQ(silenceAt(nullptr), 0.25f);
}

TEST(Articulator, AGainGivenAheadOfAnyRulesKeepsTheDefaultOnesOut) {
    CPhonemeMixtureArticulator articulator;
    articulator.SetGain("s", 0.5f);
    sounds results({{"s", 0, 100}, {"AA", 100, 200}});
    EXPECT_EQ(articulator.GenerateArticulations(&results, nullptr), kNoError);
    EXPECT_EQ(articulator.GetArticulationsBegin(), nullptr);
}

TEST(Articulator, RefusesWhatIsOutOfRange) {
    CPhonemeMixtureArticulator articulator;
    EXPECT_EQ(articulator.SetMaxContributions(0), kOutOfRange);
    EXPECT_EQ(articulator.SetMaxContributions(11), kOutOfRange);
    EXPECT_EQ(articulator.GenerateArticulations(nullptr, nullptr), kInvalidArgument);
    sounds empty;
    EXPECT_EQ(articulator.GenerateArticulations(&empty, nullptr), kNoError);
    EXPECT_EQ(articulator.GetArticulationsEnd(), nullptr);
}

TEST(Articulator, AnswersACodeForTimesAndRatesThatMakeNoFrames) {
    constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
    constexpr int32_t kMax = std::numeric_limits<int32_t>::max();
    for (const uint32_t flags : {0u, 7u}) {
        CPhonemeMixtureArticulator articulator;
        articulator.SetFlags(flags);
        sounds second({{"AA", 0, 1000}});
        sounds huge({{"AA", kMin, kMax}, {"b", kMax, kMin}});
        for (const char* rate : {"0", "-5", "1e9", "1e38"}) {
            const std::string text = "framerate " + std::string(rate) + "\nAA .5 10 10\n";
            articulator.LoadArticulatorRules(text.data(), static_cast<int32_t>(text.size()));
            EXPECT_EQ(articulator.GenerateArticulations(&second, nullptr), kOutOfRange) << rate;
            EXPECT_EQ(articulator.GetArticulationsBegin(), nullptr);
            articulator.GenerateEnvelopes();
        }
        articulator.LoadArticulatorRules(nullptr, 0);
        EXPECT_EQ(articulator.GenerateArticulations(&huge, nullptr), kOutOfRange);
        constexpr int32_t kFarMs = 300'000'000;
        sounds far({{"AA", 0, kFarMs}});
        EXPECT_EQ(articulator.GenerateArticulations(&far, nullptr), kOutOfRange);
        EXPECT_EQ(articulator.GetArticulationsBegin(), nullptr);
        EXPECT_EQ(articulator.GenerateArticulations2(&far, nullptr, kFarMs - 1000, kFarMs),
                  kNoError);
        EXPECT_LT(articulator.GetArticulationsEnd() - articulator.GetArticulationsBegin(), 100)
            << "a span makes only its own frames";
        articulator.SetFrameRate(std::numeric_limits<float>::infinity());
        EXPECT_EQ(articulator.GenerateArticulations(&second, nullptr), kOutOfRange);
        articulator.SetFrameRate(1e-9f); // one frame of 31 years
        EXPECT_EQ(articulator.GenerateArticulations(&huge, nullptr), kNoError);
        EXPECT_EQ(articulator.GenerateArticulations2(&huge, nullptr, kMin, kMax), kNoError);
    }
}

TEST(Articulator, TakesOverTheFramesOfAHost) {
    CPhonemeMixtureArticulator articulator;
    articulation frame = {};
    frame.count = 99;
    articulator.AddArticulation(frame, false);
    frame.count = -1;
    articulator.AddArticulation(frame, false);
    EXPECT_EQ(articulator.GetArticulationsBegin()[0].count, 10);
    EXPECT_EQ(articulator.GetArticulationsBegin()[1].count, 0);
    articulator.AddArticulation(articulator.GetArticulationsBegin()[0], true);
    EXPECT_EQ(articulator.GetArticulationsEnd() - articulator.GetArticulationsBegin(), 1);
    EXPECT_EQ(articulator.GetArticulationsBegin()[0].count, 10);
}

class QuanitzeTest : public testing::Test {
protected:
    void Add(int32_t start, int32_t end, std::vector<articulation_entry> entries) {
        articulation frame = {static_cast<int32_t>(entries.size()), {}, start, end};
        std::copy(entries.begin(), entries.end(), frame.entries);
        articulator.AddArticulation(frame, false);
    }

    CPhonemeMixtureArticulator articulator;
};

TEST_F(QuanitzeTest, WeighsLipsAndTheMiddleMost) {
    Add(0, 10, {{"b", 0.6f}, {"s", 0.4f}});
    Add(10, 20, {{"x", 0.5f}, {"mb", 0.25f}, {"bp", 0.25f}});
    Add(20, 30, {{"s", 1.0f}});
    const articulation* shape = articulator.Quanitze(-1, -1, 0);
    ASSERT_NE(shape, nullptr);
    EXPECT_EQ(shape->start, 0);
    EXPECT_EQ(shape->end, 30);
    // The middle is at 15, the centres at 5, 15 and 25. "bp" occurs in "bpmfvx", and "mb" does not.
    const float b = 0.6f * 2 / 10, s = 0.4f / 10 + 1.0f / 10, x = 0.5f * 0.3f, bp = 0.5f,
                mb = 0.25f;
    const float sum = b + s + x + mb + bp;
    EXPECT_STREQ(shape->entries[0].label, "bp");
    EXPECT_NEAR(Weights(*shape)["b"], b / sum, 1e-6f);
    EXPECT_NEAR(Weights(*shape)["s"], s / sum, 1e-6f);
    EXPECT_NEAR(Weights(*shape)["x"], x / sum, 1e-6f);
    EXPECT_NEAR(Weights(*shape)["mb"], mb / sum, 1e-6f);

    const articulation* two = articulator.Quanitze(0, 31, 2);
    EXPECT_EQ(two->count, 2);
    EXPECT_NEAR(two->entries[0].weight + two->entries[1].weight, 1.0f, 1e-6f);
    EXPECT_EQ(articulator.Quanitze(0, 31, 1000)->count, 5);
}

TEST_F(QuanitzeTest, TakesTheFramesThatStartInTheStretchAndNothingFromAnEmptyOne) {
    EXPECT_EQ(articulator.Quanitze(-1, -1, 0), nullptr);
    Add(0, 10, {{"a", 1.0f}});
    Add(10, 20, {{"s", 0.0f}});
    const articulation* shape = articulator.Quanitze(1, 20, 0);
    EXPECT_EQ(shape->start, 10);
    EXPECT_EQ(shape->entries[0].weight, 0.0f); // a frame without weight has no shares
    EXPECT_EQ(articulator.Quanitze(11, -1, 0), nullptr);
    EXPECT_EQ(articulator.Quanitze(-1, 0, 0), nullptr);
    EXPECT_EQ(articulator.Quanitze(0, 10, 0)->end, 10);
}

} // namespace
} // namespace tessarin::test
