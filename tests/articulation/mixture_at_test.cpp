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

/// Mixes phonemes given nearest last before, nearest first after.
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
    mixture[phoneme_label("e")] = 0.309f; // no more hundredths than d, so after it
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
