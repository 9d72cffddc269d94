#include "text/lexicon/letter_to_sound_section.h"

#include "base/byte_writer.h"
#include "base/little_endian.h"
#include "text/language_sections.h"
#include "text/pronunciation/decision_tree_file.h"
#include "text/pronunciation/pronunciation_builder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace tessarin {
namespace {

using test::bytes;
using test::language_section;
using Module = CGraphemeToPhoneRules<char>;

/// Loads a section that fills all of `section`.
int32_t Load(Module& module, const bytes& section) {
    const uint8_t* position = section.data();
    auto remaining = static_cast<uint32_t>(section.size());
    return module.LoadLetterToSound(&position, &remaining, nullptr);
}

bytes Written(const Module& module) {
    ByteWriter file;
    module.WriteLetterToSound(file);
    return {file.Content().begin(), file.Content().end()};
}

/// The groups of a word, with blanks between them and `|` between alternatives.
std::string Pronounce(Module& module, const std::string& word) {
    PronunciationBuilder builder;
    module.ApplyRules(builder, " " + std::string(module.SubstituteLetters(word)) + " ");
    std::string text;
    for (const PronunciationBuilder::group& group : builder.GetGroups()) {
        text += text.empty() ? "" : " ";
        for (const std::string& alternative : group) {
            text += (&alternative == &group.front() ? "" : "|") + alternative;
        }
    }
    return text;
}

TEST(LetterToSoundSection, HoldsAllOfARuleLanguage) {
    const bytes section = test::RuleLanguage().Take();
    Module module;
    ASSERT_EQ(Load(module, section), 0);
    EXPECT_EQ(Pronounce(module, "AKE"), "EYk");
    EXPECT_EQ(Pronounce(module, "KAA"), "kAEAA") << "a class to the left";
    EXPECT_EQ(Pronounce(module, "QAT"), "kAE t|T") << "W has no table; a list is a choice";
    EXPECT_EQ(Pronounce(module, "\xC4K"), "EYEHk");
    EXPECT_STREQ(module.cardinals[19], "c19");
    EXPECT_STREQ(module.tens[7], "t7");
    EXPECT_STREQ(module.ordinals[0], "o0");
    EXPECT_STREQ(module.ordinal_tens[7], "ot7");
    ASSERT_EQ(module.character_name_count, 2);
    EXPECT_STREQ(module.character_names[1], "wAHn ");
    EXPECT_EQ(module.fold_table[200], 200);
    EXPECT_STREQ(module.symbol_words[kAndWord], "s1");
    EXPECT_EQ(module.thousands_separator, ',');
    EXPECT_EQ(module.decimal_point, '.');
    EXPECT_STREQ(module.scale_words[kExactMillionthWord], "p9");
    EXPECT_EQ(Written(module), section);
}

TEST(LetterToSoundSection, HoldsATree) {
    const bytes section = test::TreeLanguage().Take();
    Module module;
    ASSERT_EQ(Load(module, section), 0);
    EXPECT_EQ(module.left_context, -2);
    EXPECT_EQ(module.right_context, 3);
    EXPECT_EQ(Pronounce(module, "AKT"), "AHkt");
    EXPECT_EQ(Pronounce(module, "KTAAKE"), "ktEYAHEYk") << "`_` is silent, E is not a tree letter";
    EXPECT_EQ(Pronounce(module, "Q"), "k") << "where no branch is said, nothing is";
    EXPECT_EQ(Written(module), section);
}

TEST(LetterToSoundSection, EnglishIsTheSameReadBack) {
    Module english;
    english.LoadBuiltinEnglish();
    const bytes section = Written(english);
    Module module;
    ASSERT_EQ(Load(module, section), 0);
    EXPECT_EQ(Written(module), section);
    for (const char* word : {"THE", "THEN", "COUGH", "DON'T", "YOUNG", "STATION", "AA"}) {
        EXPECT_EQ(Pronounce(module, word), Pronounce(english, word)) << word;
    }
}

// Kept: a module from a file has no suffixes, though its rules may ask for them.
TEST(LetterToSoundSection, BringsNoSuffixes) {
    Module english;
    english.LoadBuiltinEnglish();
    Module module;
    ASSERT_EQ(Load(module, Written(english)), 0);
    EXPECT_EQ(Pronounce(english, "COMING"), "kAHmIHNG");
    EXPECT_EQ(Pronounce(module, "COMING"), "kAAmIHNG");
}

// Kept: what is written is of the latest version, whatever version was read.
TEST(LetterToSoundSection, OlderVersionsLackParts) {
    language_section language = test::RuleLanguage();
    for (int16_t version = -1; version <= 4; ++version) {
        SCOPED_TRACE(version);
        language.version = version;
        Module module;
        ASSERT_EQ(Load(module, language.Take()), 0);
        EXPECT_EQ(Pronounce(module, "Q"), version >= 2 ? "k" : "");
        EXPECT_EQ(Pronounce(module, "AKE"), version >= 4 ? "EYk" : "AEk");
        EXPECT_EQ(Pronounce(module, "KA"), "kAH");
        EXPECT_EQ(LoadLittleEndian<uint16_t>(Written(module).data() + 4), 4);
    }
}

TEST(LetterToSoundSection, TakesTheLastOfTwoParts) {
    language_section language = test::RuleLanguage();
    language.tables.push_back({'K', {{"", "K", "", "g"}}});
    language.classes.push_back({"&co&", "Z"});
    Module module;
    ASSERT_EQ(Load(module, language.Take()), 0);
    EXPECT_EQ(Pronounce(module, "K"), "g");
    EXPECT_EQ(Pronounce(module, "AKE"), "AEg");
}

TEST(LetterToSoundSection, ReplacesWhatWasThere) {
    Module module;
    for (const bytes& section :
         {test::RuleLanguage().Take(), test::TreeLanguage().Take(), test::RuleLanguage().Take()}) {
        ASSERT_EQ(Load(module, section), 0);
        EXPECT_EQ(Written(module), section);
    }
}

TEST(LetterToSoundSection, MovesOnOnlyBehindAWholeSection) {
    const bytes section = test::RuleLanguage().Take();
    bytes file = section;
    file.insert(file.end(), {1, 2, 3});
    const std::pair<uint8_t, const char*> versions[] = {
        {4, ""}, {5, "Newer version of letter to sound file."}};
    for (const auto& [version, expected] : versions) {
        file[4] = version;
        const uint8_t* position = file.data();
        auto remaining = static_cast<uint32_t>(file.size());
        char message[kLetterToSoundMessageSize] = "untouched";
        Module module;
        EXPECT_EQ(module.LoadLetterToSound(&position, &remaining, message), version == 4 ? 0 : 21);
        EXPECT_STREQ(message, expected);
        EXPECT_EQ(position - file.data(), version == 4 ? std::ssize(section) : 0);
        EXPECT_EQ(remaining, version == 4 ? 3 : file.size());
    }
}

/// Loads `section` in a buffer of its own size, so that a sanitizer sees every step beyond it.
/// Whatever the result, the module must be fit to be destroyed and loaded again.
int32_t LoadHostile(bytes section) {
    section.shrink_to_fit();
    Module module;
    char message[kLetterToSoundMessageSize];
    const uint8_t* position = section.data();
    auto remaining = static_cast<uint32_t>(section.size());
    const int32_t code = module.LoadLetterToSound(&position, &remaining, message);
    EXPECT_STREQ(message, code == 12 ? "Invalid Letter To Sound file format." : "");
    EXPECT_EQ(Load(module, test::TreeLanguage().Take()), 0);
    return code;
}

TEST(LetterToSoundSection, RefusesACutAtEveryByte) {
    for (const bytes& section : {test::RuleLanguage().Take(), test::TreeLanguage().Take()}) {
        for (size_t size = 0; size < section.size(); ++size) {
            SCOPED_TRACE(size);
            bytes cut(section.begin(), section.begin() + static_cast<ptrdiff_t>(size));
            EXPECT_EQ(LoadHostile(cut), 12);
            if (size > 10) { // the same, with a size that does hold
                StoreLittleEndian(cut.data() + 6, static_cast<int32_t>(size - 10));
                EXPECT_EQ(LoadHostile(cut), 12);
            }
        }
    }
}

TEST(LetterToSoundSection, RefusesSizesAndCountsThatLie) {
    const bytes section = test::RuleLanguage().Take();
    for (const int32_t size : {INT32_MIN, -1, 0, static_cast<int32_t>(section.size()), INT32_MAX}) {
        bytes changed = section;
        StoreLittleEndian(changed.data() + 6, size);
        EXPECT_EQ(LoadHostile(changed), 12) << size;
    }
    // Numbers of substitutions, tables, rows of the first table, names and classes.
    const bytes body = test::RuleLanguage().Body();
    const auto placeOf = [&](std::string_view text) {
        const auto at = std::search(body.begin(), body.end(), text.begin(), text.end());
        EXPECT_NE(at, body.end());
        return static_cast<size_t>(at - body.begin());
    };
    const size_t places[] = {
        2, 12, 16, placeOf("nul ") - 2, placeOf("&co&") - 2, placeOf("KTW") - 2};
    for (const size_t place : places) {
        for (const uint16_t count : std::initializer_list<uint16_t>{0x7FFF, 0x8000, 0xFFFF}) {
            SCOPED_TRACE(place);
            bytes changed = section;
            StoreLittleEndian(changed.data() + 10 + place, count);
            EXPECT_EQ(LoadHostile(changed), 12) << count;
        }
    }
}

TEST(LetterToSoundSection, RefusesTreesThatDoNotHold) {
    const auto loadTree = [](const bytes& tree) {
        language_section language = test::TreeLanguage();
        language.tree = tree;
        return LoadHostile(language.Take());
    };
    EXPECT_EQ(loadTree(test::Leaf("EYAHEYAHEYAHEYA")), 0) << "the longest text of a leaf";
    EXPECT_EQ(loadTree(test::Leaf("EYAHEYAHEYAHEYAH")), 12);
    EXPECT_EQ(loadTree({1, 0}), 12) << "a long text that is empty";
    EXPECT_EQ(loadTree({1, '\1', 0}), 0);
    EXPECT_EQ(loadTree(test::Question('A', 0, test::Leaf("k"), {})), 0);
    EXPECT_EQ(loadTree(test::Question('A', 0, {}, test::Leaf("k"))), 12) << "no branch for yes";
    EXPECT_EQ(loadTree(test::Question('A', -32768, test::Leaf("k"), test::Leaf("t"))), 0);
    bytes tree = test::Leaf("k");
    for (int depth = 1; depth < kMaxTreeDepth; ++depth) {
        tree = test::Question('A', 0, test::Leaf("t"), tree);
    }
    EXPECT_EQ(loadTree(tree), 0);
    EXPECT_EQ(loadTree(test::Question('A', 0, test::Leaf("t"), tree)), 12) << "too deep";
}

TEST(LetterToSoundSection, WritesAModuleWithoutWords) {
    const Module empty;
    Module module;
    ASSERT_EQ(Load(module, Written(empty)), 0);
    EXPECT_STREQ(module.cardinals[7], "");
    EXPECT_EQ(module.fold_table, nullptr);
    EXPECT_EQ(Pronounce(module, "A"), "");
}

} // namespace
} // namespace tessarin
