#include "text/lexicon/cm_dict.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <random>
#include <string>
#include <vector>

namespace tessarin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

speak_dict_ptr Dict(std::string_view text) {
    return MakeSpeakDict(text.data(), static_cast<int32_t>(text.size()));
}

std::vector<std::string> Variants(ISpeakDict& dict, const std::string& word) {
    std::vector<std::string> found;
    CPronunciationRec record;
    for (int32_t index = 0;
         dict.GetPronunciation(word.data(), static_cast<uint16_t>(word.size()), index, &record);
         ++index) {
        found.emplace_back(record.pronunciation, record.pronunciation_length);
    }
    return found;
}

std::string First(ISpeakDict& dict, const std::string& word) {
    char out[64] = "";
    return dict.LookupFirst(word.data(), static_cast<int32_t>(word.size()), out) ? out : "-";
}

TEST(LexiconText, VariantsAreNeighbours) {
    const auto dict = Dict("HELLO=hEHlOW\nhello=hAHlOW\nABCD=x\nHELLO=hUWlOW\n");
    EXPECT_THAT(Variants(*dict, "Hello"), ElementsAre("hEHlOW", "hAHlOW"));
    EXPECT_THAT(Variants(*dict, "ABC"), IsEmpty());
    EXPECT_THAT(Variants(*dict, "ABCDE"), IsEmpty());
    CPronunciationRec record;
    EXPECT_TRUE(dict->GetPronunciation("HELLO", 5, 3, &record)) << "index 3 by itself is a HELLO";
    for (const int32_t index : {2, 4, -1, INT32_MIN, INT32_MAX}) {
        EXPECT_FALSE(dict->GetPronunciation("HELLO", 5, index, &record)) << index;
    }
}

TEST(LexiconText, Parts) {
    const auto dict = Dict("\r\n\t A =  b d \r\n=q\nB=\nFOO\nBAR=bAAr\r\rC==\tc\n\xC4=EH\nlast");
    EXPECT_THAT(Variants(*dict, "A "), ElementsAre("b d "));
    EXPECT_THAT(Variants(*dict, "A"), IsEmpty()) << "a blank before the sign belongs to the word";
    EXPECT_THAT(Variants(*dict, ""), IsEmpty());
    EXPECT_THAT(Variants(*dict, "B"), IsEmpty());
    EXPECT_THAT(Variants(*dict, "FOO\nBAR"), ElementsAre("bAAr"));
    EXPECT_THAT(Variants(*dict, "C"), ElementsAre("=\tc"));
    EXPECT_THAT(Variants(*dict, "\xC4"), ElementsAre("EH"));
    EXPECT_THAT(Variants(*dict, "\xE4"), IsEmpty()) << "only ASCII letters have no case";
    EXPECT_THAT(Variants(*dict, "last"), IsEmpty());
}

TEST(LexiconText, MayBeMissing) {
    for (const auto& dict : {MakeSpeakDict(nullptr, 0), MakeSpeakDict(nullptr, 5),
                             MakeSpeakDict("A=b", -1), MakeSpeakDict("", 0)}) {
        EXPECT_THAT(Variants(*dict, "A"), IsEmpty());
        EXPECT_EQ(First(*dict, "A"), "-");
        CPronunciationRec record;
        EXPECT_FALSE(dict->GetPronunciation(nullptr, 0, 0, &record));
    }
}

TEST(LexiconText, LengthsWrapAtSixteenBits) {
    const std::string word(65536 + 3, 'A');
    const std::string pronunciation(65536 + 2, 'k');
    const auto dict = Dict(word + "=" + pronunciation + "\n");
    EXPECT_THAT(Variants(*dict, "AAA"), ElementsAre("kk"));
}

TEST(LookupFirst, SearchesASortedText) {
    const auto dict = Dict("A=1\nAB=2\nABC=3\nb=4\nB'S=5\nBC=6\nC=7\n");
    const std::pair<const char*, const char*> words[] = {
        {"a", "1"}, {"AB", "2"}, {"abc", "3"}, {"B", "4"},    {"b's", "5"}, {"BC", "6"},
        {"C", "7"}, {"CC", "-"}, {"", "-"},    {"ABCD", "-"}, {"AA", "-"},  {"BB", "-"},
    };
    for (const auto& [word, phonemes] : words) {
        EXPECT_EQ(First(*dict, word), phonemes) << word;
    }
}

TEST(LookupFirst, TakesWordsUpTo511Letters) {
    const std::string word(512, 'A');
    const auto dict = Dict(word.substr(0, 511) + "=k\n" + word + "=t\n");
    EXPECT_EQ(First(*dict, word.substr(0, 511)), "k");
    EXPECT_EQ(First(*dict, word), "-");
    char out[8];
    EXPECT_FALSE(dict->LookupFirst("A", -1, out));
}

/// The lexicon as a plain list.
struct linear_lexicon {
    std::vector<std::pair<std::string, std::string>> entries;

    static std::string Folded(std::string word) {
        std::transform(word.begin(), word.end(), word.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
        return word;
    }
    std::string Text() const {
        std::string text;
        for (const auto& [word, pronunciation] : entries) {
            text += word + "=" + pronunciation + "\n";
        }
        return text;
    }
    std::string Find(const std::string& word, size_t index) const {
        const auto isSame = [&](const auto& entry) { return Folded(entry.first) == Folded(word); };
        const auto first = std::find_if(entries.begin(), entries.end(), isSame);
        const size_t place = static_cast<size_t>(first - entries.begin()) + index;
        return place < entries.size() && isSame(entries[place]) ? entries[place].second : "-";
    }
};

TEST(LexiconIndex, AgreesWithALinearScan) {
    std::mt19937 random(3);
    const auto randomWord = [&random] {
        std::string word;
        for (size_t length = 1 + random() % (random() % 8 == 0 ? 20 : 3); length > 0; --length) {
            word += "aAbB'\xE9\xC9[{@`"[random() % 11];
        }
        return word;
    };
    for (int round = 0; round < 300; ++round) {
        linear_lexicon plain;
        for (size_t count = round == 0 ? 8000 : random() % 60; count > 0; --count) {
            plain.entries.emplace_back(randomWord(), std::to_string(count));
        }
        const auto dict = Dict(plain.Text());
        for (int lookup = 0; lookup < 60; ++lookup) {
            const std::string word = randomWord();
            for (int32_t index = 0; index < 3; ++index) {
                CPronunciationRec record;
                const bool found = dict->GetPronunciation(
                    word.data(), static_cast<uint16_t>(word.size()), index, &record);
                const std::string said =
                    found ? std::string(record.pronunciation, record.pronunciation_length) : "-";
                ASSERT_EQ(said, plain.Find(word, static_cast<size_t>(index))) << word << " in\n"
                                                                              << plain.Text();
            }
        }
    }
}

} // namespace
} // namespace tessarin
