#include "text/markup.h"

#include "text/spoken.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tessarin {
namespace {

using testing::ElementsAre;
using testing::Pair;

CTxMarker FirstToken(const char* text) {
    const auto transcriber = EnglishTranscriber();
    CTxMarker marker = TokensOf(*transcriber, text).at(0);
    marker.groups = nullptr;
    return marker;
}

TEST(CutTag, PinsTheTextToATime) {
    const std::tuple<const char*, uint32_t, int32_t> tags[] = {
        {"<cut 1500>", kCutToken, 1500},
        {"<cut1500>", kCutToken, 1500},
        {"<cut 15x>", kCutToken, 15},
        {"<cut 0>", kCutToken, 0},
        {"<cut 99999999999999999999>", kCutToken, INT32_MAX},
        {"<cut ms=\"1500\">", kCutToken, 1500},
        {"<cut a=\"1\" ms = \" 7 \" />", kCutToken, 7},
        {"<cut ms=\"-7\">", kCutToken, -7},
        {"<cut ms=\"0\">", kTagToken, 0},
        {"<cut ms=\"x\">", kTagToken, 0},
        {"<cut ms=\"\">", kTagToken, -1},
        {"<cut ms=1500>", kTagToken, -1},
        {"<cuts ms=\"1500\">", kTagToken, -1},
        {"<cut ms=\"15>00\">", kTagToken, -1}, // the first > ends a tag
        {"<cut>", kTagToken, -1},
        {"</cut>", kTagToken, -1},
        {"<CUT 1500>", kTagToken, -1},
    };
    for (const auto& [text, kind, value] : tags) {
        SCOPED_TRACE(text);
        const CTxMarker marker = FirstToken(text);
        EXPECT_EQ(marker.kind, kind);
        EXPECT_EQ(marker.value, value);
        EXPECT_EQ(marker.group_count, 0);
    }
}

TEST(PauseTag, StaysATag) {
    EXPECT_THAT(Tokens("<pause><pauses 3></pause>"),
                ElementsAre("2 0-7 xx", "2 7-17 xx", "2 17-25"));
    EXPECT_EQ(FirstToken("<pause>").flags, kPauseTokenFlag);
}

TEST(SoundTags, OfferChoices) {
    EXPECT_THAT(Tokens("<breathing>"), ElementsAre("2 0-11 hEY|hAEhAE|hUHh|hEYhEYhEY"));
    std::string laughs = "hAHx";
    std::string choice = laughs;
    for (int count = 2; count <= 7; ++count) {
        laughs += "hAHx";
        choice += "|" + laughs;
    }
    EXPECT_THAT(Tokens("<laugh>"), ElementsAre("2 0-7 " + choice));
}

TEST(SoundTags, BreathIsFoundFromTheTagOnInOneText) {
    const auto transcriber = EnglishTranscriber();
    const auto groupCounts = [&](const char* text) {
        std::vector<int32_t> counts;
        for (const CTxMarker& marker : TokensOf(*transcriber, text)) {
            counts.push_back(marker.group_count);
        }
        return counts;
    };
    EXPECT_THAT(groupCounts(", <auto-breath-detection>,"), ElementsAre(1, 0, 2));
    EXPECT_THAT(groupCounts(","), ElementsAre(1));
    EXPECT_EQ(Said("<auto-breath-detection>,"), " / x hEY|hAEhAE|hUHh|hEYhEYhEY|x");
}

TEST(PronTag, SaysItsWordsForTheWordBehindIt) {
    const std::string lexicon = "READ=rIYd\nRED=rEHd\nRE=rIY\nDONT=k\n";
    EXPECT_THAT(Tokens("<pron sub=\"read\"> red b", lexicon),
                ElementsAre("1 18-21 rIYd", "1 22-23 bIY"));
    EXPECT_THAT(Tokens("<pron x=read>red,", lexicon), ElementsAre("1 13-17 rIYd"))
        << "the word reaches to the next blank";
    EXPECT_THAT(Tokens("<pron x=\"don't\">b", lexicon), ElementsAre("1 16-17 k"));
    EXPECT_THAT(Tokens("<pron x=\"read\">", lexicon), ElementsAre("1 15-15 rIYd"));
    EXPECT_THAT(Tokens("<pron x=\"re  d\">b", lexicon), ElementsAre("1 16-17 rIYd"))
        << "two words, of which the second runs on";
    EXPECT_THAT(Tokens("<pron>red", lexicon), ElementsAre("2 0-6", "1 6-9 rEHd"));
    EXPECT_THAT(Tokens("<pron x=\"!\">red", lexicon), ElementsAre("2 0-12", "1 12-15 rEHd"));
    EXPECT_THAT(Tokens("</pron>red", lexicon), ElementsAre("2 0-7", "1 7-10 rEHd"));
}

TEST(AuxTag, InsertsASound) {
    const std::string lexicon = "READ=rIYd\nREAD=rEHd\nRE=rIY\n";
    EXPECT_THAT(Tokens("<aux x=\"re read\">re", lexicon),
                ElementsAre("2 0-17 rIY rIYd|rEHd", "1 17-19 rIY"));
}

TEST(ParseTagAttributes, ReadsQuotedValues) {
    std::string name;
    std::map<std::string, std::string> attributes;
    size_t position = 0;
    const std::string tag = "x< cut  ms = \" 5 \" b=\"\" =\"q\" ms=\"6\" />y";
    EXPECT_TRUE(ParseTagAttributes(tag, name, attributes, position));
    EXPECT_EQ(name, "cut");
    EXPECT_THAT(attributes, ElementsAre(Pair("b", ""), Pair("ms", "6")));
    EXPECT_EQ(position, tag.size() - 1);
    EXPECT_FALSE(ParseTagAttributes(tag, name, attributes, position)) << "no more tags";
    EXPECT_TRUE(attributes.empty());
    for (const char* broken : {"", "cut ", "<cut", "<cut>", "<"}) {
        position = 0;
        EXPECT_FALSE(ParseTagAttributes(broken, name, attributes, position)) << broken;
    }
    for (const char* open : {"<cut ", "<cut ms", "<cut ms=", "<cut ms=\"5"}) {
        position = 0;
        EXPECT_TRUE(ParseTagAttributes(open, name, attributes, position)) << open;
        EXPECT_TRUE(attributes.empty());
    }
}

} // namespace
} // namespace tessarin
