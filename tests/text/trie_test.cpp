#include "text/lexicon/trie.h"

#include <gtest/gtest.h>

#include <string>

namespace tessarin {
namespace {

int ValueOr(const trie<int, char>* node, int none) {
    return node ? node->GetValue() : none;
}

TEST(Trie, FindsTheLongestKeyInBothDirections) {
    trie<int, char> suffixes;
    for (const char* key : {"ER", "E", "ES", "ELY"}) {
        suffixes.Insert(key, static_cast<int>(std::string(key).size()));
    }
    EXPECT_EQ(ValueOr(suffixes.FindLongestPrefix("ERS "), -1), 2);
    EXPECT_EQ(ValueOr(suffixes.FindLongestPrefix("ELX"), -1), 1) << "falls back to E";
    EXPECT_EQ(ValueOr(suffixes.FindLongestPrefix("ELY"), -1), 3);
    EXPECT_EQ(suffixes.FindLongestPrefix("RE"), nullptr);
    EXPECT_EQ(suffixes.FindLongestPrefix(""), nullptr) << "the empty key was not inserted";
    const std::string word = " YLEX";
    EXPECT_EQ(ValueOr(suffixes.FindLongestPrefixBackward(&word[3], ' '), -1), 3);
    EXPECT_EQ(suffixes.FindLongestPrefixBackward(&word[0], ' '), nullptr);
}

TEST(Trie, FindWantsTheWholeKey) {
    trie<int, char> words;
    words.Insert("ABC", 7);
    words.Insert("ABC", 8);
    EXPECT_EQ(ValueOr(words.Find("ABCD", 3), -1), 8);
    EXPECT_EQ(words.Find("ABCD", 2), nullptr);
    EXPECT_EQ(words.Find("ABCD", 4), nullptr);
    EXPECT_EQ(words.Find("", 0), nullptr);
    words.Insert("", 1);
    EXPECT_EQ(ValueOr(words.Find("", 0), -1), 1);
    EXPECT_EQ(ValueOr(words.FindLongestPrefix("AB"), -1), 1);
    EXPECT_TRUE(words.IsTerminal());
}

TEST(Trie, KeysMayBeVeryLong) {
    trie<int, char> words;
    const std::string key(1 << 17, 'A');
    words.Insert(key.c_str(), 5);
    EXPECT_EQ(ValueOr(words.FindLongestPrefix((key + "B").c_str()), -1), 5);
}

} // namespace
} // namespace tessarin
