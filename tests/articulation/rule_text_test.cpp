#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "articulation/default_rules.h"
#include "articulation/rule_text.h"
#include "sounds.h"

namespace tessarin::test {
namespace {

articulator_rules Read(std::string_view text, error_code expected = kNoError) {
    articulator_rules rules;
    EXPECT_EQ(ReadRuleText(text, rules), expected) << text;
    return rules;
}

const articulator_rule& RuleOf(const articulator_rules& rules, std::string_view label) {
    static const articulator_rule none = {};
    const articulator_rule* rule = rules.Find(phoneme_label(label));
    EXPECT_NE(rule, nullptr) << label;
    return rule == nullptr ? none : *rule;
}

std::string Joined(std::string_view text) {
    std::string joined;
    for (const phoneme_label label : SplitLabels(text)) {
        joined += label.Text() + ' ';
    }
    return joined;
}

TEST(SplitLabels, UpperCaseTakesTheNextCharacter) {
    EXPECT_EQ(Joined("CHjzTHZHksSH"), "CH j z TH ZH k s SH ");
    EXPECT_EQ(Joined(" 1b,\xC3p-A"), "b p A ");
}

TEST(RuleText, TheDefaultRulesCoverTheAlphabet) {
    const articulator_rules rules = Read(kDefaultRules);
    EXPECT_EQ(rules.rules.size(), 40u);
    EXPECT_EQ(rules.frame_rate, 30.0f);
    EXPECT_EQ(rules.largest_attack, 250);
    EXPECT_EQ(rules.largest_release, 125);
    EXPECT_EQ(rules.closed.size(), 5u);
    const articulator_rule& b = RuleOf(rules, "b");
    EXPECT_EQ(b.strength, 1.0f);
    EXPECT_EQ(b.early_strength, 1.0f);
    EXPECT_EQ(b.late_ms, 10);
    EXPECT_EQ(b.late_strength, 0.5f);
    EXPECT_EQ(RuleOf(rules, "AA").attack, 250);
    EXPECT_EQ(RuleOf(rules, "AA").release, 100);
    EXPECT_EQ(RuleOf(rules, "UH").early_strength, 0.9f);
}

TEST(RuleText, ReadsEveryWord) {
    const articulator_rules rules = Read("// a comment that no line of numbers 1 2 3 follows\r\n"
                                         "version 1.6\nframerate 24.5\nno_af_phn_smooth\n"
                                         "global_gain .25 global_offset -7.9\n"
                                         "AAb\t.5 10 20\r\nz 1 2 3 4 .5 6 .7\n"
                                         "gain AA .5\noffset bq -3.9\nclosed b,m\n//");
    EXPECT_EQ(rules.frame_rate, 24.5f);
    EXPECT_TRUE(rules.no_smoothing);
    EXPECT_EQ(rules.global_gain, 0.25f);
    EXPECT_EQ(rules.global_offset, -7);
    EXPECT_EQ(RuleOf(rules, "AA").gain, 0.5f);
    EXPECT_EQ(RuleOf(rules, "AA").late_strength, 0.5f);
    EXPECT_EQ(RuleOf(rules, "b").offset, -3);
    EXPECT_EQ(RuleOf(rules, "b").release, 20);
    EXPECT_EQ(RuleOf(rules, "q").offset, -3); // made of zeros for the offset's sake
    EXPECT_EQ(RuleOf(rules, "q").strength, 0.0f);
    EXPECT_EQ(RuleOf(rules, "z").early_ms, 4);
    EXPECT_EQ(RuleOf(rules, "z").late_strength, 0.7f);
    EXPECT_EQ(rules.closed.size(), 2u);
}

TEST(RuleText, ARowReplacesGainAndOffset) {
    EXPECT_EQ(RuleOf(Read("gain b 2\nb 1 2 3\n"), "b").gain, 0.0f);
    EXPECT_EQ(RuleOf(Read("b 1 2 3\ngain b 2"), "b").gain, 2.0f);
    const articulator_rules twice = Read("b 1 20 30\nb .5 2 3\n");
    EXPECT_EQ(RuleOf(twice, "b").strength, 0.5f);
    EXPECT_EQ(twice.largest_attack, 20);
    EXPECT_EQ(twice.largest_release, 30);
}

TEST(RuleText, OnlyALineEndBringsTheDefaultsOfAShortRow) {
    EXPECT_EQ(RuleOf(Read("b .5 2 3 "), "b").early_strength, 0.0f);
    EXPECT_EQ(RuleOf(Read("b .5 2 3 \n"), "b").early_strength, 0.5f);
    EXPECT_EQ(RuleOf(Read("b .5 2 3 4 .7"), "b").early_strength, 0.7f);
    EXPECT_EQ(RuleOf(Read("b .5 2 3 4\n.7\n8 .9"), "b").late_strength, 0.9f);
}

TEST(RuleText, AnswersACodeAndKeepsWhatItRead) {
    struct {
        const char* text;
        error_code code;
    } const cases[] = {
        {"b 1 2 3\nversion 1.7", kNewerVersion},
        {"b 1 2 3\nversion", kInvalidFile},
        {"b 1 2 3\nversion x", kInvalidFile},
        {"b 1 2 3\nclosed bQ", kInvalidFile},
        {"b 1 2 3\nframerat 30", kInvalidFile},
        {"b 1 2 3\ngain p", kInvalidFile},
        {"b 1 2 3\np 1", kInvalidFile},
        {"b 1 2 3\np 1 2 99999999999\n", kInvalidFile},
        {"b 1 2 3\np 1 2 3 // loud\n", kInvalidFile},
        {"b 1 2 3\np nan 2 3\n", kInvalidFile},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const articulator_rules rules = Read(c.text, c.code);
        EXPECT_EQ(RuleOf(rules, "b").release, 3);
    }
    EXPECT_EQ(Read("closed bQ", kInvalidFile).closed.size(), 1u);
}

TEST(LoadArticulatorRules, EmptiesTheRulesAndNothingElse) {
    articulator_rules rules = Read("b 1 200 300\nclosed b\nglobal_gain 1\n");
    EXPECT_EQ(ReadRuleText("s .5 1 1\n", rules), kNoError);
    EXPECT_EQ(rules.rules.size(), 1u);
    EXPECT_EQ(rules.largest_attack, 200);
    EXPECT_EQ(rules.closed.size(), 1u);
    EXPECT_EQ(rules.global_gain, 1.0f);
}

TEST(LoadArticulatorRules, TakesDefaultsForNoTextAndRefusesANegativeLength) {
    CPhonemeMixtureArticulator articulator;
    EXPECT_EQ(articulator.LoadArticulatorRules("b", -1), kInvalidArgument);
    EXPECT_EQ(articulator.LoadArticulatorRules("b", 0), kNoError);
    EXPECT_EQ(articulator.LoadArticulatorRules(nullptr, -5), kNoError);
}

TEST(ArticulatorRule, StrengthAndFadeFollowTheStretches) {
    const articulator_rule rule = {"b", 40, 20, 0.5f, 10, 0.1f, 5, 0.9f, 0.0f, 0};
    const std::pair<int32_t, float> strengths[] = {{90, 0.1f},  {109, 0.1f}, {110, 0.5f},
                                                   {195, 0.5f}, {196, 0.9f}, {230, 0.9f}};
    for (const auto& [t, strength] : strengths) {
        EXPECT_EQ(StrengthAt(rule, 100, 200, t), strength) << t;
    }
    const std::pair<int32_t, float> fades[] = {{79, 0.0f},  {80, 0.0f},  {95, 0.75f}, {100, 1.0f},
                                               {199, 1.0f}, {200, 1.0f}, {230, 0.25f}};
    for (const auto& [t, fade] : fades) {
        EXPECT_EQ(FadeAt(rule, 100, 200, t), fade) << t;
    }
    EXPECT_EQ(FadeAt({}, 100, 200, 99), 0.0f);
    EXPECT_EQ(FadeAt({}, 100, 200, 200), 0.0f); // no release: 0 / 0 is nothing
}

} // namespace
} // namespace tessarin::test
