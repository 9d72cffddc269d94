#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "apps/train/g2p_alignment.h"
#include "apps/train/g2p_evaluation.h"
#include "apps/train/g2p_lexicon.h"
#include "apps/train/g2p_pruning.h"
#include "apps/train/g2p_training.h"
#include "apps/train/g2p_tree.h"
#include "apps/train/g2p_words.h"
#include "base/byte_writer.h"
#include "base/text_copy.h"
#include "model/phoneme_alphabet.h"
#include "support/temp_file.h"
#include "text/pronunciation/decision_tree_file.h"

namespace tessarin::training {
namespace {

using testing::ElementsAre;

std::vector<spelled_word> Words(const std::string& text) {
    CCmDict dict;
    EXPECT_TRUE(dict.LoadText(text.data(), static_cast<int32_t>(text.size())));
    return ReadSpelledWords(dict.GetEntries());
}

/// A word with what its letters say, such as `A:EY X:ks E:_`.
std::string Show(const aligned_word& word) {
    std::string text;
    for (size_t i = 0; i < word.letters.size(); ++i) {
        text += i > 0 ? " " : "";
        text += word.letters[i] + (":" + ChunkText(word.chunks[i]));
    }
    return text;
}

std::vector<std::string> Alignments(const std::string& text) {
    std::vector<std::string> shown;
    for (const aligned_word& word : AlignLetters(Words(text))) {
        shown.push_back(Show(word));
    }
    return shown;
}

std::string Spell(const phone_string& phones) {
    std::string text;
    for (const size_t phone : phones) {
        text += PhonemeAlphabet()[phone].label;
    }
    return text;
}

/// A module that speaks by what it learnt from the words alone.
std::unique_ptr<CGraphemeToPhoneRules<char>> Learnt(const std::string& text, double leafPrice,
                                                    const g2p_settings& settings = {}) {
    CGraphemeToPhoneRules<char> english;
    english.LoadBuiltinEnglish();
    return LearnTree(english, Words(text), leafPrice, settings);
}

std::string Section(const CGraphemeToPhoneRules<char>& module) {
    ByteWriter section;
    module.WriteLetterToSound(section);
    return {section.Content().begin(), section.Content().end()};
}

// C before E and I is s, otherwise k; every vowel has one sound.
constexpr const char* kSoftC =
    "CAB=kAEb\nCAD=kAEd\nCOB=kAAb\nCOD=kAAd\nCEB=sEHb\nCED=sEHd\nCIB=sIHb\nCID=sIHd\n"
    "ACA=AEkAE\nACE=AEsEH\nACO=AEkAA\nACI=AEsIH\nBAC=bAEk\nBIC=bIHk\nDOC=dAAk\n";

TEST(SpelledWords, AreThoseThatATextAsksFor) {
    const auto words = Words("don't=dOWnt\nB2B=bIYtUWbIY\nAD-HOC=AEdhAAk\nA.M.=EYEHm\n"
                             "\xC9T\xC9=EYtEY\nODD=AAqd\nREAD=rEHd\nREAD=rIYd\n");
    ASSERT_EQ(words.size(), 3u);
    EXPECT_TRUE(Words(std::string(255, 'A') + "=AE").empty());
    EXPECT_EQ(words[0].letters, "DON'T");
    EXPECT_EQ(words[1].letters, "\xC9T\xC9");
    EXPECT_EQ(words[2].pronunciations, (std::vector{ReadPhones("rEHd"), ReadPhones("rIYd")}));
}

TEST(SpelledWords, HaveTheirUsesForEver) {
    EXPECT_EQ(UseOf("TESSARIN"), UseOf(std::string("TESSA") + "RIN"));
    size_t numForMeasuring = 0;
    size_t numForChoosing = 0;
    for (int i = 0; i < 10000; ++i) {
        const std::string word = "W" + std::to_string(i);
        numForMeasuring += UseOf(word) == word_use::kMeasure ? 1 : 0;
        numForChoosing += UseOf(word) == word_use::kChoose ? 1 : 0;
    }
    EXPECT_NEAR(static_cast<double>(numForMeasuring), 1000.0, 100.0);
    EXPECT_NEAR(static_cast<double>(numForChoosing), 900.0, 100.0);

    const auto words = Words(kSoftC);
    std::set<std::string> seen;
    for (const word_use use : {word_use::kGrow, word_use::kChoose, word_use::kMeasure}) {
        for (const spelled_word& word : Select(words, {use})) {
            EXPECT_TRUE(seen.insert(word.letters).second) << word.letters;
        }
    }
    EXPECT_EQ(seen.size(), words.size());
}

TEST(PhoneChunks, AreNumberedWithoutGapsOrDoubles) {
    const size_t numPhones = PhonemeAlphabet().size();
    std::set<std::string> texts = {ChunkText(MakeChunk({}))};
    EXPECT_TRUE(texts.contains("_"));
    for (size_t a = 0; a < numPhones; ++a) {
        texts.insert(ChunkText(MakeChunk(std::vector{a})));
        for (size_t b = 0; b < numPhones; ++b) {
            const phone_chunk chunk = MakeChunk(std::vector{a, b});
            EXPECT_LT(chunk, CountChunks());
            EXPECT_EQ(ReadPhones(ChunkText(chunk)), (phone_string{a, b}));
            texts.insert(ChunkText(chunk));
        }
    }
    EXPECT_EQ(texts.size(), 1 + numPhones + numPhones * numPhones);
}

TEST(AlignLetters, FindsSilentAndDoubleLettersByThemselves) {
    EXPECT_THAT(Alignments("AX=AEks\nAXE=AEks\nMADE=mEYd\nMAT=mAEt\nPAT=pAEt\nPHAT=fAEt\n"
                           "PEN=pEHn\nTEN=tEHn\nMET=mEHt\nTAX=tAEks\nMATT=mAEt\nHAT=hAEt\n"
                           "HEN=hEHn\nNAME=nEYm\n"),
                testing::IsSupersetOf({"T:t A:AE X:ks", "A:AE X:ks E:_", "M:m A:EY D:d E:_",
                                       "P:f H:_ A:AE T:t", "M:m A:AE T:t T:_", "H:h E:EH N:n"}));
}

TEST(AlignLetters, LosesNoPhonemeAndLeavesOutWhatHasTooMany) {
    const std::string endless(65000, 'd');
    const auto words = Words(std::string(kSoftC) + "WX=dAHblyUWEHks\n" + "DADADADADA=" + endless);
    const auto aligned = AlignLetters(words);
    ASSERT_EQ(aligned.size(), words.size() - 2);
    for (size_t i = 0; i < aligned.size(); ++i) {
        std::string said;
        for (const phone_chunk chunk : aligned[i].chunks) {
            said += ChunkText(chunk);
        }
        EXPECT_EQ(said, Spell(words[i].pronunciations.front()));
    }
}

TEST(LetterTree, LearnsTheContextThatDecides) {
    const auto module = Learnt(kSoftC, 1.0);
    ASSERT_NE(module, nullptr);
    for (const auto& [word, phonemes] : {std::pair{"ICO", "IHkAA"}, std::pair{"OCI", "AAsIH"},
                                         std::pair{"DICED", "dIHsEHd"}, std::pair{"BOC", "bAAk"}}) {
        EXPECT_EQ(Spell(Pronounce(*module, word)), phonemes) << word;
    }
    EXPECT_EQ(module->left_context, 0) << "nothing before a letter matters";
    EXPECT_EQ(module->right_context, 1);
}

TEST(LetterTree, StaysSilentOnWhatItNeverMet) {
    const auto module = Learnt(kSoftC, 1.0);
    for (const char* word : {"CAB", "C-A-B", "C4AB", "CA'B",
                             "\xC7"
                             "CAB",
                             "C\xFF"
                             "AB",
                             "ZCAB"}) {
        EXPECT_EQ(Spell(Pronounce(*module, word)), "kAEb") << word;
    }
    for (const char* word : {"", "'", "-", "7", "\xE9\xE8", "cab"}) {
        EXPECT_EQ(Spell(Pronounce(*module, word)), "") << word;
    }
}

TEST(LetterTree, BelievesExceptionsThatRepeat) {
    std::string text = "NAG=nAEg\nTAG=tAEg\n"; // G is g, but j once before I and thrice before E
    for (const char* start : {"A", "O", "U", "L", "M", "N"}) {
        text += std::string(start) + "GO=AAgOW\n" + start + "GA=AAgAE\n";
    }
    text += "AGI=AAjIH\nAGE=AAjEH\nOGE=AAjEH\nUGE=AAjEH\n";
    const auto module = Learnt(text, 0.0);
    EXPECT_THAT(Spell(Pronounce(*module, "GE")), testing::HasSubstr("j"));
    EXPECT_THAT(Spell(Pronounce(*module, "GI")), testing::HasSubstr("g"));
}

TEST(LetterTree, ShrinksWithThePriceOfItsLeaves) {
    const auto trees = GrowTrees(AlignLetters(Words(kSoftC)), 5, 1);
    size_t numLeaves = SIZE_MAX;
    for (const double price : {0.0, 2.0, 1000.0}) {
        const size_t now = CountLeaves(*PruneTrees(trees, price));
        EXPECT_LE(now, numLeaves);
        numLeaves = now;
    }
    EXPECT_EQ(numLeaves, trees.size()) << "each letter keeps its commonest sound";
}

TEST(LetterTree, IsIndifferentToThreadsAndKeepsToItsReach) {
    const std::string text = "ABCDE=AEbkdEH\nBBCDE=bksdEH\nABCDD=AEbksd\nBBCDD=bkd\n"
                             "ACCDE=AEkdEH\nBCCDE=bkkdEH\nACCDD=AEkksd\nBCCDD=bksd\n";
    const auto one = Learnt(text, 0.0, {.reach = 3, .numThreads = 1});
    const auto three = Learnt(text, 0.0, {.reach = 3, .numThreads = 3});
    EXPECT_EQ(Section(*one), Section(*three));
    EXPECT_GE(one->left_context, -3);
    EXPECT_LE(one->right_context, 3);
    EXPECT_LT(one->left_context, 0);
}

TEST(MeasureErrors, CountsByTheNearestPronunciation) {
    const auto module = Learnt(kSoftC, 1.0); // says kAEb, AEkAE, sEHd
    const pronunciation_errors errors =
        MeasureErrors(*module, Words("CAB=kAEt\nCAB=kAEbz\nCAB=bAEk\nACA=AEkAE\nCED=sEHdIHd\n"));
    EXPECT_EQ(errors.numWords, 3u);
    EXPECT_EQ(errors.numWrongWords, 2u);
    EXPECT_EQ(errors.numWrongPhones, 3u) << "one of kAEt, two of sEHdIHd";
    EXPECT_EQ(errors.numPhones, 3u + 3u + 5u);
    EXPECT_DOUBLE_EQ(errors.PhoneErrorPercent(), 100.0 * 3 / 11);
    EXPECT_DOUBLE_EQ(errors.RightWordPercent(), 100.0 / 3);
}

TEST(ChooseLeafPrice, TakesWhatServesOtherWordsBest) {
    // Each word for growing says its A at will, so all that can be learnt of them is the commonest.
    std::string text;
    size_t numChoosing = 0;
    for (char a = 'B'; a <= 'Z'; ++a) {
        for (char b = 'B'; b <= 'Z'; ++b) {
            const std::string word = {a, 'A', b};
            const bool isOdd = UseOf(word) == word_use::kGrow && (a * 7 + b * 11) % 4 == 0;
            numChoosing += UseOf(word) == word_use::kChoose ? 1 : 0;
            text += word + "=t" + (isOdd ? "EY" : "AE") + "d\n";
        }
    }
    ASSERT_GT(numChoosing, 20u);
    CGraphemeToPhoneRules<char> english;
    english.LoadBuiltinEnglish();
    EXPECT_EQ(ChooseLeafPrice(english, Words(text), {}), 8.0);
}

TEST(LetterTree, BeatsTheRulesInWordsThatItNeverSaw) {
    CLearnerLexicon lexicon;
    ASSERT_EQ(lexicon.Open(TESSARIN_SOURCE_DIR "/data/en-us.lexicon"), kNoError);
    const auto all = ReadSpelledWords(lexicon.GetEntries());
    std::vector<spelled_word> some;
    for (size_t i = 0; i < all.size(); i += 10) {
        some.push_back(all[i]);
    }
    CGraphemeToPhoneRules<char> rules;
    rules.LoadBuiltinEnglish();
    const auto known = Select(some, {word_use::kGrow, word_use::kChoose});
    const auto tree = LearnTree(rules, known, 3.0, {});
    const auto asked = Select(some, {word_use::kMeasure});
    const double byRules = MeasureErrors(rules, asked).PhoneErrorPercent();
    const double byTree = MeasureErrors(*tree, asked).PhoneErrorPercent();
    EXPECT_GT(byRules, 19.0);
    EXPECT_LT(byTree, 14.0) << "of a tenth of the lexicon";
}

TEST(LearnerLexicon, KeepsAllButTheEngine) {
    const std::string text = std::string(kSoftC) + "ACI=EYsAY\nX-RAY=EHksrEY\n";
    const test::TempFile list(".txt");
    list.Write({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
    CLearnerLexicon lexicon;
    ASSERT_EQ(lexicon.Open(list.Path()), kNoError);
    EXPECT_EQ(lexicon.GetLanguage().decision_tree, nullptr);
    const auto learnt =
        LearnTree(lexicon.GetLanguage(), ReadSpelledWords(lexicon.GetEntries()), 1.0, {});
    const test::TempFile file(".lexicon");
    ASSERT_EQ(lexicon.Save(file.Path(), *learnt), kNoError);

    CLearnerLexicon again;
    ASSERT_EQ(again.Open(file.Path()), kNoError);
    ASSERT_EQ(again.GetEntries().size(), lexicon.GetEntries().size());
    EXPECT_EQ(std::string_view(again.GetEntries().back().word, 5), "X-RAY");
    EXPECT_EQ(Section(again.GetLanguage()), Section(*learnt));
    EXPECT_STREQ(again.GetLanguage().cardinals[1], "wAHn ");

    // A file that works by a tree already learns a new one.
    const auto relearnt =
        LearnTree(again.GetLanguage(), ReadSpelledWords(again.GetEntries()), 1.0, {});
    EXPECT_EQ(Section(*relearnt), Section(*learnt));
}

TEST(LearnerLexicon, RefusesWhatItCannotRead) {
    CLearnerLexicon lexicon;
    EXPECT_EQ(lexicon.Open(test::TempFile().Path()), kFileNotFound);
    const uint8_t broken[] = {'T', 'C', 'I', 'D', 2, 0, 'E'};
    EXPECT_EQ(lexicon.Open(test::TempFile(broken, ".lexicon").Path()), kInvalidFile);
    EXPECT_EQ(Learnt("", 1.0)->decision_tree, nullptr) << "no words, no tree";
}

} // namespace
} // namespace tessarin::training
