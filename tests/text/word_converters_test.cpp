#include "text/spoken.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tessarin {
namespace {

using testing::ElementsAre;

TEST(ConvertWord, LeavesQuotesOut) {
    EXPECT_THAT(Tokens("don't"), ElementsAre("1 0-5 dOWnt"));
    EXPECT_THAT(Tokens("'tis'", "TIS=tIHz"), ElementsAre("1 0-5 tIHz"));
    EXPECT_THAT(Tokens("\"red\"", "RED=rEHd"), ElementsAre("1 0-5 rEHd"));
    EXPECT_THAT(Tokens("\x93red\x94", "RED=rEHd"), ElementsAre("1 0-5 rEHd")) << "curly quotes";
    EXPECT_EQ(Said("dogs'\"", "DOGS'=k\nDOGS=t"), "k") << "one quote is taken off";
    EXPECT_THAT(Tokens("caf\xE9", "CAFE=kAEfEY"), ElementsAre("1 0-4 kAEfEY"));
}

TEST(ConvertWord, SaysALoneLetterByItsName) {
    EXPECT_EQ(Said("A b"), "EY / bIY");
    EXPECT_EQ(Said("A"), "EY");
    EXPECT_EQ(Said("A."), "AH / x") << "with a stop it goes through the rules";
}

TEST(ConvertWord, SaysNoEndlessNames) {
    const std::string name(100000, 'b');
    const std::vector<const char*> names(128, name.c_str());
    auto language = std::make_unique<CGraphemeToPhoneRules<char>>();
    language->character_names = names.data();
    language->character_name_count = 128;
    const auto transcriber =
        counted_ptr<CTranscriber>::Adopt(new CTranscriber(nullptr, std::move(language)));
    for (const CTxMarker& marker : TokensOf(*transcriber, "a b")) {
        EXPECT_EQ(Pronunciation(marker), name.substr(0, kMaxPhonemesLength));
    }
}

TEST(ConvertWord, OffersNoEndlessChoice) {
    std::string lexicon = "KAT=" + std::string(UINT16_MAX, 'k') + "\n";
    for (int variant = 0; variant < 3; ++variant) {
        lexicon += "kat=t\n";
    }
    const auto numWays = [](const std::string& text) {
        const auto transcriber = EnglishTranscriber(text);
        return TokensOf(*transcriber, "kat").at(0).groups[0].alternative_count;
    };
    EXPECT_EQ(numWays(lexicon), 2);
    EXPECT_EQ(numWays(lexicon.substr(lexicon.find('\n'))), 3);
}

TEST(ConvertWord, ExpandsAbbreviationsWithAStop) {
    const std::string lexicon = "MISTER=mIHstER\nDOCTOR=dAAktER\nMISSUS=mIHsIHz\nSMITH=smIHTH\n"
                                "MRS=k\nBOB=bAAb\n";
    EXPECT_THAT(Tokens("Mr. Smith", lexicon), ElementsAre("1 0-3 mIHstER", "1 4-9 smIHTH"));
    EXPECT_THAT(Tokens("mrs.", lexicon), ElementsAre("1 0-4 mIHsIHz"));
    EXPECT_THAT(Tokens("Dr.", lexicon), ElementsAre("1 0-3 dAAktER"));
    EXPECT_THAT(Tokens("Mrs Smith", lexicon), ElementsAre("1 0-3 k", "1 4-9 smIHTH"));
    EXPECT_THAT(Tokens("PhD."), ElementsAre("1 0-4 pIY EYtCH dIY"));
    EXPECT_THAT(Tokens("Bob.", lexicon), ElementsAre("1 0-3 bAAb", "4 3-4 x"));
}

TEST(ConvertWord, SpellsDottedLettersAndLettersBeforeDigits) {
    EXPECT_THAT(Tokens("U.S.A. b"), ElementsAre("1 0-6 AHw EHz EY", "1 7-8 bIY"));
    EXPECT_EQ(Said("U.S.A.", "USA=k"), "k");
    EXPECT_EQ(Said("e.g."), "IY jIY");
    EXPECT_EQ(Said("U.S"), "yUW / x / EHz") << "without the second stop it is not an abbreviation";
    EXPECT_EQ(Said("\"U.S."), "yUW / x / s / x") << "after a quote neither is it one";
    EXPECT_THAT(Tokens("mp3"), ElementsAre("1 0-2 EHm pIY", "1 2-3 THrIY"));
    EXPECT_THAT(Tokens("mp3", "MP=k"), ElementsAre("1 0-2 k", "1 2-3 THrIY"));
}

TEST(ConvertWord, CutsVeryLongWords) {
    const std::string piece(254, 'B');
    const std::string lexicon = piece + "=k\nB=t\n";
    EXPECT_THAT(Tokens(piece + "b", lexicon), ElementsAre("1 0-255 k t"));
    EXPECT_THAT(Tokens(piece, lexicon), ElementsAre("1 0-254 k"));
    EXPECT_THAT(Tokens(piece.substr(1) + "'", lexicon + piece.substr(1) + "'=p\n"),
                ElementsAre("1 0-254 p"))
        << "a quote that ends the piece was said with it";
}

TEST(ConvertWeb, SpellsTheSchemeAndSaysThePieces) {
    const std::string lexicon = "AT=AEt\nDOT=dAAt\nBOB=bAAb\nWWW=w\nX=k\nY=t\nX/Y=p\n";
    EXPECT_THAT(
        Tokens("http://x.y z", lexicon),
        ElementsAre("1 0-10 EYtCH tIY tIY pIY kAAlAHn slAESH slAESH k dAAt t", "1 11-12 zIY"));
    EXPECT_THAT(Tokens("https://x", lexicon).size(), 5u) << "a word, three marks, a word";
    EXPECT_THAT(Tokens("www.x/y,", lexicon).at(0), "1 0-8 w dAAtksIH")
        << "the comma belongs to the last piece, which then is not a word of the lexicon";
    EXPECT_THAT(Tokens("bob@x.y", lexicon), ElementsAre("1 0-7 bAAb AEt k dAAt t"));
    EXPECT_THAT(Tokens("bob@ x", lexicon), ElementsAre("1 0-3 bAAb", "4 3-4 x", "1 5-6 k"));
    EXPECT_THAT(Tokens("bob@", lexicon), ElementsAre("1 0-4 bAAb AEt")) << "no blank follows";
    EXPECT_THAT(Tokens("www.x.y.", lexicon), ElementsAre("1 0-8 w dAAt k dAAt t dAAt"))
        << "the last stop belongs to the address";
    EXPECT_THAT(Tokens("www", lexicon), ElementsAre("1 0-3 w"));
    EXPECT_THAT(Tokens("www x", lexicon), ElementsAre("1 0-3 w", "1 4-5 k"));
    EXPECT_THAT(Tokens("www.12.x", lexicon), ElementsAre("1 0-8 w dAAt dAAt k"))
        << "a piece without a letter is passed over";
    EXPECT_THAT(Tokens("http://", lexicon).size(), 1u);
}

} // namespace
} // namespace tessarin
