#include "text/pronunciation/rule_matching.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace tessarin {
namespace {

constexpr size_t kManySteps = SIZE_MAX;

/// English suffixes, and the classes &vw& (A, E), &lq& (L, M, Q).
struct language {
    language() {
        module.LoadBuiltinEnglish();
        module.letter_classes["&vw&"] = {'A', 'E'};
        module.letter_classes["&lq&"] = {'L', 'M', 'Q'};
    }
    bool Right(std::string_view pattern, const std::string& word, ptrdiff_t place) const {
        step_budget budget(kManySteps);
        return MatchRightContext(module, pattern, word, place, budget);
    }
    bool Left(std::string_view pattern, const std::string& word, ptrdiff_t place) const {
        step_budget budget(kManySteps);
        return MatchLeftContext(module, pattern, word, place, budget);
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
    random_case(std::mt19937& random, const std::vector<std::string>& pieces,
                std::string_view letters = "AEIBLMQY'") {
        for (size_t count = random() % 12; count > 0; --count) {
            pattern += pieces[random() % pieces.size()];
        }
        word = " ";
        for (size_t count = 1 + random() % 14; count > 0; --count) {
            word += letters[random() % letters.size()];
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
    step_budget budget(kManySteps);
    EXPECT_FALSE(MatchRightContext(fromFile, "%", " LIKE ", 4, budget))
        << "a module without suffixes";
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

/// The plain recursion, for patterns of vowels, consonants and letters: every attempt is made.
bool PlainlyFits(const std::string& pattern, ptrdiff_t at, const std::string& word, ptrdiff_t place,
                 ptrdiff_t step) {
    if (at < 0 || at >= std::ssize(pattern)) {
        return true;
    }
    const auto isIn = [&](std::string_view letters) {
        return place >= 0 && place < std::ssize(word) &&
               letters.find(word[static_cast<size_t>(place)]) != std::string_view::npos;
    };
    const char symbol = pattern[static_cast<size_t>(at)];
    if (symbol != '#' && symbol != ':') {
        return isIn({&symbol, 1}) && PlainlyFits(pattern, at + step, word, place + step, step);
    }
    if (symbol == ':' && place >= 0 && PlainlyFits(pattern, at + step, word, place, 1)) {
        return true;
    }
    while (isIn(symbol == '#' ? "AEIOU" : kConsonants)) {
        place += step;
        if (PlainlyFits(pattern, at + step, word, place, step)) {
            return true;
        }
    }
    return false;
}

TEST(LeftContext, AgreesWithThePlainRecursion) {
    const language english;
    std::mt19937 random(3);
    int fits = 0;
    for (int round = 0; round < 20000; ++round) {
        const random_case test(random, {":", ":", "#", "A", "L"}, "LLA");
        SCOPED_TRACE("'" + test.pattern + "' on '" + test.word + "'");
        const bool expected =
            PlainlyFits(test.pattern, std::ssize(test.pattern) - 1, test.word, test.place, -1);
        ASSERT_EQ(english.Left(test.pattern, test.word, test.place), expected);
        fits += expected ? 1 : 0;
    }
    EXPECT_GT(fits, 1000);
}

TEST(LeftContext, EndsAtTheStartOfTheWord) {
    const language english;
    EXPECT_TRUE(english.Left("", " A", -1));
    EXPECT_TRUE(english.Left(" ^", " BA ", 1));
    EXPECT_FALSE(english.Left("^ ^", " BA ", 1)) << "before the blank there is nothing";
    EXPECT_FALSE(english.Left("A", " A", -1));
}

TEST(Context, StepsGrowWithPatternTimesWord) {
    const language english;
    const std::string mixed = [] {
        std::string pattern;
        while (pattern.size() + 6 <= kMaxContextLength) {
            pattern += ":#*lq*";
        }
        return pattern;
    }();
    const std::string colons(kMaxContextLength - 1, ':');
    const std::string vowels(kMaxContextLength - 1, '#');
    const std::string word = " " + std::string(250, 'L') + " ";
    const auto stepsOf = [&](auto match, const std::string& pattern, const std::string& text,
                             ptrdiff_t place) {
        step_budget budget(kManySteps);
        EXPECT_FALSE(match(english.module, pattern, text, place, budget));
        return (kManySteps - budget.Left()) / (pattern.size() * text.size());
    };
    EXPECT_LT(stepsOf(MatchRightContext, mixed, word, 1), 10u);
    EXPECT_LT(stepsOf(MatchLeftContext, mixed, word, 250), 10u);
    EXPECT_LT(stepsOf(MatchRightContext, colons + "1", word, 1), 10u);
    const std::string vowel = " " + std::string(250, 'A') + " ";
    EXPECT_LT(stepsOf(MatchRightContext, vowels + "1", vowel, 1), 10u);
    EXPECT_LT(stepsOf(MatchLeftContext, "1" + vowels, vowel, 250), 10u);
    EXPECT_FALSE(english.Right(colons + "::", word, 1)) << "too long";
    EXPECT_TRUE(english.Right(colons + ":", word, 1));
}

TEST(Context, NothingFitsWithoutSteps) {
    const language english;
    step_budget budget(2000);
    EXPECT_TRUE(MatchRightContext(english.module, "^#", " LA ", 1, budget));
    EXPECT_FALSE(MatchRightContext(english.module, std::string(200, ':') + "1",
                                   std::string(200, 'L'), 0, budget));
    EXPECT_FALSE(MatchRightContext(english.module, "^#", " LA ", 1, budget));
    EXPECT_FALSE(MatchLeftContext(english.module, "#", " LA ", 2, budget));
    EXPECT_TRUE(MatchLeftContext(english.module, "", " LA ", 2, budget)) << "costs nothing";
}

} // namespace
} // namespace tessarin
