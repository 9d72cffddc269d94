#include "model/phoneme_alphabet.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "model/phoneme_alphabets.h"
#include "tessarin/tessarin_c.h"

namespace tessarin {
namespace {

struct split {
    bool valid;
    std::string symbols; ///< separated by blanks
    size_t lastOffset;
    bool operator==(const split&) const = default;
};

split Split(std::string_view text) {
    std::vector<const phoneme_symbol*> symbols;
    split result{};
    result.valid = ParsePhonemeString(text, symbols, &result.lastOffset);
    for (const phoneme_symbol* symbol : symbols) {
        result.symbols += std::string(result.symbols.empty() ? "" : " ") + symbol->label;
    }
    return result;
}

TEST(PhonemeAlphabet, IsOneStringOfFortySymbols) {
    std::string all;
    for (const phoneme_symbol& symbol : PhonemeAlphabet()) {
        all += symbol.label;
        EXPECT_EQ(FindPhonemeSymbol(symbol.label), &symbol);
    }
    EXPECT_EQ(PhonemeAlphabet().size(), 40u);
    EXPECT_EQ(all, "xmpbvfZHCHjSHszDHTHtNGgkhrERwUHUWAWIYyIHAEAYEYEHndlAAAHAOOWOY");
    EXPECT_EQ(FindPhonemeSymbol("a"), nullptr);
    EXPECT_EQ(FindPhonemeSymbol("A"), nullptr);
}

TEST(PhonemeAlphabet, EveryPhonemeHasOneSymbolInEachAlphabet) {
    for (const uint32_t alphabet :
         {TESSARIN_LABELS, TESSARIN_IPA, TESSARIN_ARPABET, TESSARIN_SAMPA}) {
        std::set<std::string> symbols;
        for (const phoneme_symbol& phoneme : PhonemeAlphabet()) {
            ASSERT_NE(SymbolInAlphabet(phoneme.label, alphabet), nullptr) << phoneme.label;
            symbols.insert(SymbolInAlphabet(phoneme.label, alphabet));
        }
        EXPECT_EQ(symbols.size(), 40u) << alphabet;
    }
    EXPECT_STREQ(SymbolInAlphabet("NG", TESSARIN_IPA), "\u014B");
    EXPECT_STREQ(SymbolInAlphabet("j", TESSARIN_ARPABET), "JH");
    EXPECT_STREQ(SymbolInAlphabet("OW", TESSARIN_SAMPA), "oU");
    EXPECT_EQ(SymbolInAlphabet("Q", TESSARIN_IPA), nullptr);
    EXPECT_EQ(SymbolInAlphabet("AA", TESSARIN_SAMPA + 1), nullptr);
}

TEST(PhonemeAlphabet, SplitsAPhonemeString) {
    EXPECT_EQ(Split("sEHvAHn"), (split{true, "s EH v AH n", 6}));
    EXPECT_EQ(Split(" h,EY\t, x\n"), (split{true, "h EY x", 8}));
    EXPECT_EQ(Split(""), (split{true, "", 0}));
    EXPECT_EQ(Split("hEYc"), (split{false, "h EY", 3}));
    EXPECT_EQ(Split("hE"), (split{false, "h", 1}));   // an upper-case letter at the end
    EXPECT_EQ(Split("hE Y"), (split{false, "h", 1})); // takes the blank with it
}

TEST(PhonemeAlphabet, VowelsAndSonorantsDifferOnPurpose) {
    for (const char* label : {"r", "rr", "ER", "y"}) {
        EXPECT_TRUE(is_sonorant_label(label)) << label;
        EXPECT_FALSE(is_vowel_label(label)) << label;
    }
    for (const char* label : {"w", "UH", "UW", "AW", "AE", "AY", "AA", "AH", "AO", "IY", "IH", "EY",
                              "EH", "OW", "OY"}) {
        EXPECT_TRUE(is_sonorant_label(label)) << label;
        EXPECT_TRUE(is_vowel_label(label)) << label;
    }
    for (const char* label : {"", "x", "l", "m", "n", "NG", "E", "EHx"}) {
        EXPECT_FALSE(is_sonorant_label(label)) << label;
        EXPECT_FALSE(is_vowel_label(label)) << label;
    }
}

} // namespace
} // namespace tessarin
