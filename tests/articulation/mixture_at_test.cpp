#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <list>
#include <map>
#include <string>

#include "articulation/mixture_at.h"
#include "articulation/rule_text.h"

namespace tessarin::test {
namespace {

using weights = std::map<std::string, float>;

/// Mixes phonemes given nearest last before, nearest first behind.
class MixtureAtTest : public testing::Test {
protected:
    void Rules(std::string_view text) { ASSERT_EQ(ReadRuleText(text, rules), kNoError); }

    const sounding_phoneme* Phoneme(std::string_view label, int32_t start, int32_t end,
                                    float score = 100.0f) {
        const phoneme_label packed(label);
        phonemes.push_back({start, end, score, packed, rules.Find(packed)});
        return &phonemes.back();
    }

    weights Mixed(int32_t t, const neighbourhood& around) {
        phoneme_mixture mixture;
        MixtureAt(t, around, settings, previous, mixture);
        weights result;
        for (const auto& entry : mixture) {
            result[entry.label.Text()] = entry.weight;
        }
        return result;
    }

    static auto Shares(const weights& parts) {
        float sum = 0.0f;
        for (const auto& [label, part] : parts) {
            sum += part;
        }
        std::vector<testing::Matcher<std::pair<const std::string, float>>> matchers;
        for (const auto& [label, part] : parts) {
            matchers.push_back(testing::Pair(label, testing::FloatNear(part / sum, 1e-6f)));
        }
        return testing::ElementsAreArray(matchers);
    }

    articulator_rules rules;
    mixture_settings settings;
    phoneme_mixture previous;
    std::list<sounding_phoneme> phonemes;
};

TEST_F(MixtureAtTest, NeighboursFadeInAndLinger) {
    Rules("a .8 50 50\ns .4 40 50\nt .6 50 100\nx .5 50 50\n");
    const auto* t = Phoneme("t", 0, 100);
    const auto* a = Phoneme("a", 100, 200);
    const auto* s = Phoneme("s", 200, 300);
    EXPECT_THAT(Mixed(170, {a, {t}, {s}}),
                Shares({{"a", 0.8f}, {"s", 0.4f * 0.25f}, {"t", 0.6f * 0.3f}}));
    EXPECT_THAT(Mixed(350, {nullptr, {t, a}, {s}}), testing::IsEmpty());
}

TEST_F(MixtureAtTest, AQuietPhonemeGivesWayToSilence) {
    Rules("s .5 50 50\nx .5 50 50\n");
    EXPECT_THAT(Mixed(50, {Phoneme("s", 0, 100, 40.0f), {}, {}}), Shares({{"s", 4}, {"x", 6}}));
    EXPECT_THAT(Mixed(50, {Phoneme("s", 0, 100, -40.0f), {}, {}}), Shares({{"x", 1}}));
    // Silence shows through its nearest occurrence, and the rest of a level is one.
    EXPECT_THAT(Mixed(90, {Phoneme("s", 0, 100, 40.0f), {}, {Phoneme("x", 100, 200)}}),
                Shares({{"s", 4}, {"x", 6}}));
    settings.global_gain = 0.25f;
    const_cast<articulator_rule*>(rules.Find(phoneme_label("s")))->gain = 0.25f;
    EXPECT_THAT(Mixed(50, {Phoneme("s", 0, 100, 40.0f), {}, {}}), Shares({{"s", 9}, {"x", 1}}));
}

TEST_F(MixtureAtTest, OnlyTheNearestOccurrenceShows) {
    Rules("a .8 100 100\ns .4 100 100\n");
    const auto* current = Phoneme("s", 100, 200);
    EXPECT_THAT(Mixed(120, {current,
                            {Phoneme("a", 0, 30), Phoneme("a", 40, 80)},
                            {Phoneme("a", 200, 300), Phoneme("s", 210, 300)}}),
                Shares({{"a", 0.8f * 0.6f}, {"s", 0.4f}}));
}

TEST_F(MixtureAtTest, TheExcessOfALevelIsNotFaded) {
    Rules("s .5 100 100\nz .5 100 100\n");
    const auto* loud = Phoneme("s", 0, 100, 150.0f);
    const auto* z = Phoneme("z", 100, 200);
    EXPECT_THAT(Mixed(120, {z, {loud}, {}}), Shares({{"s", 0.5f * 0.8f}, {"z", 0.5f}}));
    settings.count_excess = true;
    EXPECT_THAT(Mixed(120, {z, {loud}, {}}), Shares({{"s", 0.5f + 0.5f * 0.8f}, {"z", 0.5f}}));
}

TEST_F(MixtureAtTest, ADominantPhonemeHidesItsNeighbours) {
    Rules("b 1 100 100 0 1 10 .5\na .5 100 100\ns .5 100 100\n");
    const auto* a = Phoneme("a", 0, 100);
    const auto* b = Phoneme("b", 100, 200);
    const auto* s = Phoneme("s", 200, 300);
    const neighbourhood around = {b, {a}, {s}};
    EXPECT_THAT(Mixed(149, around), Shares({{"b", 1}}));
    EXPECT_THAT(Mixed(195, around), Shares({{"a", 0.025f}, {"b", 0.5f}, {"s", 0.475f}}));
    settings.smooth = true;
    EXPECT_THAT(Mixed(149, around), Shares({{"a", 0.255f}, {"b", 1}}));
    EXPECT_THAT(Mixed(150, around), Shares({{"b", 1}, {"s", 0.25f}}));
}

TEST_F(MixtureAtTest, ADominantNeighbourHidesThoseBehindItEvenOutOfReach) {
    Rules("b 1 10 10\na .5 200 200\ns .5 200 200\nt .5 200 200\n");
    const neighbourhood around = {
        Phoneme("t", 100, 200),
        {Phoneme("a", 0, 50), Phoneme("b", 50, 100)},
        {Phoneme("s", 200, 210), Phoneme("b", 210, 220), Phoneme("a", 220, 300)}};
    EXPECT_THAT(Mixed(150, around), Shares({{"s", 0.375f}, {"t", 0.5f}}));
    // A phoneme without a rule hides nothing.
    rules.rules.clear();
    EXPECT_THAT(Mixed(150, {Phoneme("t", 100, 200), {Phoneme("a", 0, 50)}, {}}),
                testing::IsEmpty());
}

TEST_F(MixtureAtTest, SilenceIsDroppedFirstAndTheFrameBeforeIsFavoured) {
    Rules("s .5 1000 1000\nz .7 1000 1000\n");
    const auto* s = Phoneme("s", 0, 100);
    const neighbourhood around = {s, {}, {Phoneme("z", 100, 200)}};
    settings.max_contributions = 1;
    EXPECT_THAT(Mixed(50, around), Shares({{"z", 1}})); // .665 against .5
    previous[phoneme_label("s")] = 0.1f;
    EXPECT_THAT(Mixed(50, around), Shares({{"s", 1}})); // .665 against .75
    // A rest of .3 is divided by the 2 entries that there were.
    EXPECT_THAT(Mixed(50, {Phoneme("z", 0, 100, 40.0f), {}, {}}), Shares({{"z", 1}}));
}

TEST_F(MixtureAtTest, NumbersThatNoRecordingHasMakeNoMouthShape) {
    Rules("s 3e38 50 50\nz 3e38 50 50\nx .5 50 50\n");
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInf = std::numeric_limits<float>::infinity();
    settings.count_excess = true;
    for (const float score : {kNan, kInf, -kInf, 3e38f, -3e38f}) {
        SCOPED_TRACE(score);
        const weights mixture =
            Mixed(99, {Phoneme("s", 0, 100, score), {}, {Phoneme("z", 101, 200, score)}});
        for (const auto& [label, weight] : mixture) {
            EXPECT_TRUE(weight >= 0.0f && weight <= 1.0f);
        }
    }
}

TEST(MakeArticulation, TakesTenLabelsInOrderAndSortsByHundredths) {
    phoneme_mixture mixture;
    for (char c = 'a'; c <= 'l'; ++c) {
        mixture[phoneme_label(std::string(1, c))] = 0.05f;
    }
    mixture[phoneme_label("c")] = 0.0f;
    mixture[phoneme_label("d")] = 0.304f;
    mixture[phoneme_label("e")] = 0.309f; // no more hundredths than d, so behind it
    mixture[phoneme_label("abc")] = 0.9f; // no label of a mouth shape
    mixture[phoneme_label("l")] = 0.9f;   // the eleventh
    const articulation record = MakeArticulation(mixture, 3, 4);
    std::string order;
    for (int32_t i = 0; i < record.count; ++i) {
        order += record.entries[i].label;
    }
    EXPECT_EQ(order, "deabfghijk");
}

} // namespace
} // namespace tessarin::test
