#include "text/pronunciation/grapheme_to_phone_rules.h"

#include "base/text_copy.h"
#include "text/english_words.h"
#include "text/pronunciation/english_rules.h"
#include "text/pronunciation/pronunciation_builder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tessarin {
namespace {

using testing::ElementsAre;
using group = PronunciationBuilder::group;

std::vector<group> Apply(CGraphemeToPhoneRules<char>& module, const std::string& word) {
    PronunciationBuilder builder;
    module.ApplyRules(builder, " " + word + " ");
    return builder.GetGroups();
}

std::string Pronounce(const std::string& word) {
    CGraphemeToPhoneRules<char> english;
    english.LoadBuiltinEnglish();
    std::string phonemes;
    for (const group& part : Apply(english, word)) {
        phonemes += (phonemes.empty() ? "" : " ") + part.front();
    }
    return phonemes;
}

TEST(EnglishRules, EveryTableIsComplete) {
    const std::string keys = "@ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    const std::vector<int> numRows = {10, 33, 6, 11, 10, 53, 2,  10, 6, 28, 1, 2,  5, 2,
                                      8,  48, 5, 3,  2,  24, 26, 35, 2, 12, 1, 11, 1};
    int total = 0;
    for (size_t index = 0; index < kEnglishRuleTables.size(); ++index) {
        SCOPED_TRACE(keys[index]);
        EXPECT_EQ(kEnglishRuleTables[index].key, keys[index]);
        int count = 0;
        for (const GraphemeRule* rule = kEnglishRuleTables[index].rows; rule->match; ++rule) {
            ++count;
            if (keys[index] != '@') {
                EXPECT_EQ(rule->match[0], keys[index]) << "a rule is found by its first letter";
            }
        }
        EXPECT_EQ(count, numRows[index]);
        total += count;
    }
    EXPECT_EQ(total, 357);
}

TEST(EnglishRules, PronounceWords) {
    const std::pair<const char*, const char*> words[] = {
        {"THE", "DHAH"},     // blanks on both sides
        {"THEN", "DHEHn"},   // a blank on the left only
        {"AN", "AEn"},       // pieces run together
        {"AA", "AEAH"},      // the last row, then the first
        {"HELLO", "hEHlOW"}, // the second L is silent
        {"FOX", "fAAks"},    // X
        {"DON'T", "dOWnt"},  // a match holds the apostrophe
        {"'TIS", "tIHs"},    // elsewhere it is skipped
        {"A1B", "AEb"},      // a digit is skipped
        {"MAKE", "mEYk"},    // [A]^% and a silent E
        {"RUNNING", "rAHnnIHNG"},
        {"HOPED", "hOWpt"},
        {"", ""},
    };
    for (const auto& [word, phonemes] : words) {
        EXPECT_EQ(Pronounce(word), phonemes) << word;
    }
}

TEST(EnglishRules, NothingFitsTheAtSign) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(Pronounce("A@B"), "AEb");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error: Can't find rule for: '@' in \" A@B \"\n");
}

TEST(EnglishWords, TheFoldTableIsPlainAsciiForLatinLetters) {
    const std::string accented = "\xC0\xC9\xD1\xDC\xDF\xE4\xE9\xF1\xFC\xFF";
    std::string folded;
    for (const char letter : accented) {
        folded += static_cast<char>(kEnglishFoldTable[static_cast<uint8_t>(letter)]);
    }
    EXPECT_EQ(folded, "AENU\xDF"
                      "aenuy");
    int changed = 0;
    for (int code = 0; code < 256; ++code) {
        changed += kEnglishFoldTable[static_cast<size_t>(code)] != code ? 1 : 0;
        if (code < 128) {
            EXPECT_EQ(kEnglishFoldTable[static_cast<size_t>(code)], code);
        }
    }
    EXPECT_EQ(changed, 128 - 31);
}

TEST(EnglishWords, CharactersAreNamed) {
    EXPECT_STREQ(kEnglishCharacterNames[0], "nUWl ");
    EXPECT_STREQ(kEnglishCharacterNames[4], "EHnd AHv trAEnsmIHSHAHn") << "no blank after it";
    EXPECT_STREQ(kEnglishCharacterNames['G'], "jIY  ");
    EXPECT_STREQ(kEnglishCharacterNames['`'], "AEpAAstrAAfIH ");
    EXPECT_STREQ(kEnglishCharacterNames['|'], "vERtIHkAHl bAAr ");
    EXPECT_STREQ(kEnglishCharacterNames[127], "dEHl ");
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        const auto code = static_cast<size_t>(letter);
        EXPECT_STREQ(kEnglishCharacterNames[code], kEnglishCharacterNames[code + 32]);
    }
}

TEST(Rules, MayOfferAChoiceAndConsumeNothing) {
    constexpr GraphemeRule rules[] = {
        {" ", "A", "", "?EY  AH\tAA "},
        {"", "", "B", "t"},
        {"", "A", "", "?"},
        {nullptr, nullptr, nullptr, nullptr},
    };
    CGraphemeToPhoneRules<char> module;
    module.rule_tables['A'] = rules;
    EXPECT_THAT(Apply(module, "A"), ElementsAre(group{"EY", "AH", "AA"}));
    EXPECT_THAT(Apply(module, "CA"), ElementsAre()) << "an empty choice";
    module.rule_tables['B'] = rules + 2;
    testing::internal::CaptureStderr();
    EXPECT_THAT(Apply(module, "BB"), ElementsAre());
    EXPECT_EQ(testing::internal::GetCapturedStderr().find("Error: Can't find rule for: 'B'"), 0u);
    constexpr GraphemeRule endless[] = {{"", "", "", "t"}, {nullptr, nullptr, nullptr, nullptr}};
    module.rule_tables['B'] = endless;
    EXPECT_THAT(Apply(module, "BB"), ElementsAre(group{"tt"}))
        << "a rule that consumes nothing goes on with the next letter";
}

TEST(Rules, CostlyContextsUseUpTheStepsOfTheirWord) {
    const std::string costly = std::string(1000, ':') + "1";
    std::vector<GraphemeRule> rules(200, {"", "B", costly.c_str(), "t"});
    rules.push_back({"", "B", "B", "n"});
    rules.push_back({"", "B", "", "b"});
    rules.push_back({nullptr, nullptr, nullptr, nullptr});
    CGraphemeToPhoneRules<char> module;
    module.rule_tables['B'] = rules.data();
    EXPECT_THAT(Apply(module, "BB"), ElementsAre(group{"bb"})) << "no context fits any more";
    module.rule_tables['B'] = rules.data() + 200;
    EXPECT_THAT(Apply(module, "BB"), ElementsAre(group{"nb"})) << "the next word has its own";
}

TEST(Rules, SayNoEndlessPhonemes) {
    const std::string longText = std::string(kMaxPhonemesLength, 'b') + "n";
    const std::string choice = "? t " + std::string(2 * kMaxPhonemesLength, 'b');
    const std::string atMost = longText.substr(0, kMaxPhonemesLength);
    const GraphemeRule rules[] = {{"", "B", "", longText.c_str()},
                                  {"", "C", "", choice.c_str()},
                                  {nullptr, nullptr, nullptr, nullptr}};
    CGraphemeToPhoneRules<char> module;
    module.rule_tables['B'] = module.rule_tables['C'] = rules;
    EXPECT_THAT(Apply(module, "BB"), ElementsAre(group{atMost + atMost}));
    EXPECT_THAT(Apply(module, "C"), ElementsAre(group{"t", atMost.substr(choice.find('b'))}));
}

TEST(Rules, SubstituteLetters) {
    CGraphemeToPhoneRules<char> module;
    EXPECT_EQ(module.SubstituteLetters("GR\xDC\xDF"), "GR\xDC\xDF");
    module.letter_substitutions['\xDC'] = "UE";
    module.letter_substitutions['\xDF'] = "";
    EXPECT_EQ(module.SubstituteLetters("GR\xDC\xDF"), "GRUE");
    EXPECT_EQ(module.SubstituteLetters(""), "");
    const std::string longText(60000, 'E');
    module.letter_substitutions['A'] = longText.c_str();
    EXPECT_EQ(module.SubstituteLetters("AAAB").size(), 65536u) << "longer than any known word";
}

std::unique_ptr<t2p_decision_node> Leaf(const char* phoneme) {
    auto leaf = std::make_unique<t2p_decision_node>();
    CopyText(leaf->phoneme, phoneme);
    return leaf;
}

std::unique_ptr<t2p_decision_node> Question(char letter, int16_t offset,
                                            std::unique_ptr<t2p_decision_node> yes,
                                            std::unique_ptr<t2p_decision_node> no) {
    auto node = std::make_unique<t2p_decision_node>();
    node->letter = static_cast<uint8_t>(letter);
    node->offset = offset;
    node->yes = std::move(yes);
    node->no = std::move(no);
    return node;
}

TEST(DecisionTree, AsksAboutTheLettersAround) {
    CGraphemeToPhoneRules<char> module;
    module.rule_tables['A'] = kEnglishRuleTables[1].rows;
    // C is s before E and k elsewhere; E is silent at the end of a word; any H is nothing.
    module.decision_tree =
        Question('C', 0, Question('E', 1, Leaf("s"), Leaf("k")),
                 Question('E', 0, Question('-', 2, Leaf("_"), Leaf("EH")), nullptr));
    module.tree_letters = {'C', 'E', 'H'};
    module.right_context = 2;
    EXPECT_THAT(Apply(module, "CECHA"), ElementsAre(group{"sEHk"}));
    EXPECT_THAT(Apply(module, "CE"), ElementsAre(group{"s"}));
    EXPECT_THAT(Apply(module, ""), ElementsAre());
    module.letter_substitutions['A'] = "CEC"; // goes before the tree
    EXPECT_THAT(Apply(module, "A"), ElementsAre(group{"sk"}));
}

TEST(DecisionTree, LooksBackBeyondTheWord) {
    CGraphemeToPhoneRules<char> module;
    module.decision_tree = Question('-', -3, Leaf("AH"), Leaf("EY"));
    module.tree_letters = {'A'};
    module.left_context = -3;
    EXPECT_THAT(Apply(module, "AXXAA"), ElementsAre(group{"AHEYEY"}));
    EXPECT_THAT(Apply(module, "AAAAAAA"), ElementsAre(group{"AHAHAHEYEYEYEY"}));
}

} // namespace
} // namespace tessarin
