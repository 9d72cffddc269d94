#include "text/pronunciation/rule_matching.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace tessarin {
namespace {

/// English suffixes, and the classes &vw& (A, E), &lq& (L, M, Q).
struct language {
    language() {
        module.LoadBuiltinEnglish();
        module.letter_classes["&vw&"] = {'A', 'E'};
        module.letter_classes["&lq&"] = {'L', 'M', 'Q'};
    }
    bool Right(std::string_view pattern, const std::string& word, ptrdiff_t place) const {
        return MatchRightContext(module, pattern, word, place);
    }
    bool Left(std::string_view pattern, const std::string& word, ptrdiff_t place) const {
        return MatchLeftContext(module, pattern, word, place);
    }
    CGraphemeToPhoneRules<char> module;
};

constexpr const char* kConsonants = "BCDFGHJKLMNPQRSTVWXYZ";

/// What one symbol of a pattern fits: some of these letters.
struct repetition {
    std::string letters;
    bool mayBeNone = false;
    bool mayBeMany = false;
};

/// The pattern in one form for all symbols, as far as it has no suffixes.
std::vector<repetition> Repetitions(const std::string& pattern) {
    std::vector<repetition> list;
    for (size_t at = 0; at < pattern.size(); ++at) {
        const char symbol = pattern[at];
        if (symbol == '&' || symbol == '!' || symbol == '*') {
            const bool isWhole = at + 4 <= pattern.size();
            const bool isKnown = isWhole && (symbol != '&' || pattern[at + 3] == '&');
            const std::string name = isKnown ? pattern.substr(at + 1, 2) : "";
            const char* letters = name == "vw" ? "AE" : name == "lq" ? "LMQ" : "";
            list.push_back({letters, symbol == '*' && isWhole, symbol != '&'});
            at += 3;
        } else if (symbol == '#') {
            list.push_back({"AEIOU", false, true});
        } else if (symbol == ':') {
            list.push_back({kConsonants, true, true});
        } else {
            list.push_back({symbol == '^'   ? kConsonants
                            : symbol == '.' ? "BDVGJLMNRWZ"
                            : symbol == '+' ? "EIY"
                                            : std::string(1, symbol)});
        }
    }
    return list;
}

/// Tries every way to lay the repetitions from `index` on over the beginning of `text`.
bool SomeWayFits(const std::vector<repetition>& list, size_t index, std::string_view text) {
    if (index == list.size()) {
        return true;
    }
    const repetition& part = list[index];
    if (part.mayBeNone && SomeWayFits(list, index + 1, text)) {
        return true;
    }
    if (text.empty() || part.letters.find(text[0]) == std::string::npos) {
        return false;
    }
    return SomeWayFits(list, index + 1, text.substr(1)) ||
           (part.mayBeMany && SomeWayFits(list, index, text.substr(1)));
}

/// Random patterns out of `pieces`, and words of few letters, so that many of them fit.
struct random_case {
    random_case(std::mt19937& random, const std::vector<std::string>& pieces) {
        for (size_t count = random() % 12; count > 0; --count) {
            pattern += pieces[random() % pieces.size()];
        }
        word = " ";
        for (size_t count = 1 + random() % 14; count > 0; --count) {
            word += "AEIBLMQY'"[random() % 9];
        }
        word += ' ';
        place = static_cast<ptrdiff_t>(random() % word.size());
    }
    std::string pattern;
    std::string word;
    ptrdiff_t place;
};

TEST(RightContext, FitsWhereSomeWayFits) {
    const language english;
    const std::vector<std::string> pieces = {"#",    ":",    "^",    ".",    "+",    "A",
                                             "L",    "'",    " ",    "&vw&", "!lq!", "*vw*",
                                             "*lq*", "&no&", "*no*", "!vw"};
    std::mt19937 random(1);
    int fits = 0;
    for (int round = 0; round < 20000; ++round) {
        const random_case test(random, pieces);
        SCOPED_TRACE("'" + test.pattern + "' on '" + test.word.substr(test.place) + "'");
        const bool expected =
            SomeWayFits(Repetitions(test.pattern), 0, test.word.substr(test.place));
        ASSERT_EQ(english.Right(test.pattern, test.word, test.place), expected);
        fits += expected ? 1 : 0;
    }
    EXPECT_GT(fits, 1000) << "the words are to fit now and then";
}

TEST(LeftContext, IsTheMirrorImage) {
    const language english;
    // Class names read the same from both sides, so that a reversed pattern is a pattern.
    language mirrored;
    mirrored.module.letter_classes["&wv&"] = {'A', 'E'};
    const std::vector<std::string> pieces = {"#", "^", ".", "+", "A", "L", "!vw!", "*vw*"};
    std::mt19937 random(2);
    int fits = 0;
    for (int round = 0; round < 20000; ++round) {
        const random_case test(random, pieces);
        std::string text = test.word.substr(0, test.place + 1);
        SCOPED_TRACE("'" + test.pattern + "' on '" + text + "'");
        std::reverse(text.begin(), text.end());
        const std::string reversed(test.pattern.rbegin(), test.pattern.rend());
        const bool expected = mirrored.Right(reversed, text, 0);
        ASSERT_EQ(english.Left(test.pattern, test.word, test.place), expected);
        fits += expected ? 1 : 0;
    }
    EXPECT_GT(fits, 1000);
}

TEST(RightContext, SuffixesMoveByTheirLength) {
    const language english;
    EXPECT_TRUE(english.Right("^%", " LIKELY ", 3)) << "K and ELY";
    EXPECT_TRUE(english.Right("^% ", " LIKELY ", 3));
    EXPECT_TRUE(english.Right("%S", " LIKERS ", 4)) << "the longest, ER, then S";
    EXPECT_FALSE(english.Right("%RS", " LIKERS ", 4)) << "a shorter suffix is not tried";
    EXPECT_FALSE(english.Right("%", " LIKING ", 3));
    EXPECT_TRUE(english.Left("%X", " YLEX ", 4)) << "on the left it is read backwards";
    const CGraphemeToPhoneRules<char> fromFile;
    EXPECT_FALSE(MatchRightContext(fromFile, "%", " LIKE ", 4)) << "a module without suffixes";
}

TEST(LeftContext, NoConsonantIsTestedForwards) {
    const language english;
    // Left of the place stands no A. Read properly, `A#:` wants an A before the vowel; forwards
    // from the symbol before the colon, `#:` fits the I and what follows, and that is enough.
    EXPECT_TRUE(english.Left("A#:", " XIB ", 2));
    EXPECT_FALSE(english.Left("A#^", " XIB ", 3));
    // With a consonant the pattern is read to the left again.
    EXPECT_FALSE(english.Left("A#:", " XIB ", 3));
    EXPECT_TRUE(english.Left("X#:", " XIB ", 3));
    EXPECT_TRUE(english.Left(":", " XIB ", 2)) << "nothing before the colon is left to fit";
}

TEST(LeftContext, EndsAtTheStartOfTheWord) {
    const language english;
    EXPECT_TRUE(english.Left("", " A", -1));
    EXPECT_TRUE(english.Left(" ^", " BA ", 1));
    EXPECT_FALSE(english.Left("^ ^", " BA ", 1)) << "before the blank there is nothing";
    EXPECT_FALSE(english.Left("A", " A", -1));
}

TEST(Context, ManyRepetitionsTakeLittleTime) {
    const language english;
    std::string pattern;
    for (int count = 0; count < 250; ++count) {
        pattern += ":#*lq*";
    }
    const std::string word = " " + std::string(250, 'L') + " ";
    EXPECT_FALSE(english.Right(pattern.substr(0, 1020), word, 1));
    EXPECT_FALSE(english.Left(pattern.substr(0, 1020), word, 250));
    EXPECT_FALSE(english.Right(":::::::1", word, 1));
    EXPECT_FALSE(english.Right("#######1", " " + std::string(250, 'A') + " ", 1));
    EXPECT_FALSE(english.Right(std::string(kMaxContextLength + 1, ':'), word, 1));
    EXPECT_TRUE(english.Right(std::string(kMaxContextLength, ':'), word, 1));
}

} // namespace
} // namespace tessarin
