#include "base/text_copy.h"
#include "support/logged_lines.h"
#include "tessarin/converted_text.h"
#include "text/spoken.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace tessarin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Transcriber, CutsTextIntoTokens) {
    EXPECT_THAT(Tokens(""), IsEmpty());
    EXPECT_THAT(Tokens(" \t\r\n"), IsEmpty());
    EXPECT_THAT(Tokens("Hello, world"), ElementsAre("1 0-5 hEHlOW", "4 5-6 x", "1 7-12 wERld"));
    EXPECT_THAT(Tokens("{a note} [another]"), ElementsAre("2 0-8", "2 9-18"));
    EXPECT_THAT(Tokens("a < b"), ElementsAre("1 0-1 EY", "4 2-3 x", "1 4-5 bIY"));
    EXPECT_THAT(Tokens("<?x?></b>"), ElementsAre("2 0-5", "2 5-9"));
    EXPECT_THAT(Tokens("\xC8"), ElementsAre("1 0-1 IY")) << "an accented letter is a letter";
    EXPECT_THAT(Tokens("\x80"), ElementsAre("1 0-1")) << "nothing can be said";
    EXPECT_THAT(Tokens("\x07"), ElementsAre("1 0-1 bEHl"));
    EXPECT_THAT(Tokens("}"), ElementsAre("4 0-1 x"));
}

TEST(Transcriber, PunctuationIsAPauseThatMustBePassed) {
    const auto transcriber = EnglishTranscriber();
    const auto tokens = TokensOf(*transcriber, "a, b");
    ASSERT_EQ(tokens.size(), 3u);
    EXPECT_EQ(tokens[0].flags, 0u);
    EXPECT_EQ(tokens[1].flags, kPauseTokenFlag);
    for (const CTxMarker& token : tokens) {
        EXPECT_EQ(token.value, -1);
        EXPECT_EQ(token.first_state + token.last_state, 0u);
    }
}

TEST(Transcriber, AnOpenBracketReachesPastTheEnd) {
    EXPECT_THAT(Tokens("a {rest"), ElementsAre("1 0-1 EY", "2 2-8"));
    EXPECT_THAT(Tokens("["), ElementsAre("2 0-2"));
    EXPECT_THAT(Tokens("<b"), ElementsAre("2 0-3"));
}

TEST(Transcriber, TheLexiconGoesBeforeTheRules) {
    const std::string lexicon = "HELLO=hAHlOW\nHELLO=hEHlOW\nA=AH\nIT=\nUSA=yUWEHsEY\n";
    EXPECT_EQ(Said("hello HELLO Hello", lexicon), "hAHlOW|hEHlOW / hAHlOW|hEHlOW / hAHlOW|hEHlOW");
    EXPECT_EQ(Said("a", lexicon), "AH");
    EXPECT_EQ(Said("a. b", lexicon), "AH / x / bIY");
    EXPECT_EQ(Said("U.S.A.", lexicon), "yUWEHsEY");
    const std::string longPronunciation(600, 'k');
    EXPECT_EQ(Said("zz", "ZZ=" + longPronunciation), longPronunciation);
}

TEST(Transcriber, AnEmptyPronunciationStillHasItsToken) {
    // H is silent before a consonant, and so is the apostrophe.
    EXPECT_THAT(Tokens("hh"), ElementsAre("1 0-2"));
    EXPECT_THAT(Tokens("'"), ElementsAre("1 0-1"));
    const auto transcriber = EnglishTranscriber();
    const auto tokens = TokensOf(*transcriber, "'");
    EXPECT_EQ(tokens.at(0).groups, nullptr);
}

TEST(Transcriber, GivesNoTranscription) {
    const auto transcriber = EnglishTranscriber();
    EXPECT_STREQ(transcriber->GetTranscription(), "");
    EXPECT_TRUE(transcriber->Transcribe("hello"));
    EXPECT_STREQ(transcriber->GetTranscription(), "");
    uint32_t length = 1;
    EXPECT_EQ(transcriber->GetInfoString(&length), nullptr);
    EXPECT_EQ(length, 0u);
}

TEST(Transcriber, MissingTextsAreEmpty) {
    const auto transcriber = EnglishTranscriber();
    uint32_t count = 1;
    EXPECT_EQ(transcriber->GetOutputMarkers(&count), nullptr);
    EXPECT_EQ(transcriber->GetInputChar(0), 0u);
    transcriber->Transcribe("hello");
    EXPECT_TRUE(transcriber->Transcribe(static_cast<const char*>(nullptr)));
    EXPECT_EQ(transcriber->GetOutputMarkers(&count), nullptr);
    EXPECT_EQ(count, 0u);
    transcriber->Transcribe("hello");
    EXPECT_TRUE(transcriber->Transcribe(static_cast<IQuibConvertedText*>(nullptr)));
    EXPECT_EQ(transcriber->GetOutputMarkers(nullptr), nullptr);
}

TEST(Transcriber, KeepsTheRawText) {
    const auto transcriber = EnglishTranscriber();
    transcriber->Transcribe("\x93"
                            "b\xE9");
    const int32_t places[] = {0, 1, 2, 3, 4, -1, INT32_MAX, INT32_MIN};
    std::vector<uint32_t> codes;
    for (const int32_t place : places) {
        codes.push_back(transcriber->GetInputChar(place));
    }
    EXPECT_THAT(codes, ElementsAre(0x93, 'b', 0xE9, 0, 0, 0, 0, 0));
}

TEST(Transcriber, LexiconsCanBeSwapped) {
    const auto transcriber = EnglishTranscriber("HELLO=k\n");
    const auto said = [&] { return Pronunciation(TokensOf(*transcriber, "hello").at(0)); };
    EXPECT_EQ(said(), "k");
    const auto lent = MakeSpeakDict("HELLO=t\n", 8);
    transcriber->SetSpeakDict(lent.get(), false);
    EXPECT_EQ(said(), "t");
    transcriber->SetSpeakDict(nullptr, true);
    EXPECT_EQ(said(), "hEHlOW");
    ISpeakDict* given = MakeSpeakDict("HELLO=p\n", 8).release();
    transcriber->SetSpeakDict(given, true);
    transcriber->SetSpeakDict(given, true);
    EXPECT_EQ(said(), "p");
}

TEST(Transcriber, WithoutALanguageOnlyTheLexiconSpeaks) {
    CTranscriber transcriber(MakeSpeakDict("HELLO=k\n", 8), nullptr);
    const char* text = "hello world 1234.5 $1.50 21st a U.S. http://x.y \x93 2147483648";
    std::string said;
    for (const CTxMarker& token : TokensOf(transcriber, text)) {
        said += Pronunciation(token);
    }
    EXPECT_EQ(said, "kxx") << "one word, and the stops in the numbers";
}

TEST(Transcriber, RestoresTheLocale) {
    const auto transcriber = EnglishTranscriber();
    TranscriberInfo info = {};
    CopyText(info.locale, "C.UTF-8");
    transcriber->setTranscriberInfo(&info);
    const std::string before = std::setlocale(LC_ALL, nullptr);
    transcriber->Transcribe("hello");
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
    CopyText(info.locale, "no such locale");
    transcriber->setTranscriberInfo(&info);
    EXPECT_EQ(Pronunciation(TokensOf(*transcriber, "hello").at(0)), "hEHlOW");
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
    TranscriberInfo copy = {};
    transcriber->getTranscriberInfo(&copy);
    EXPECT_STREQ(copy.locale, "no such locale");
}

TEST(Transcriber, TracesItsOperations) {
    const auto lines = test::LoggedLines([] {
        const auto transcriber = EnglishTranscriber();
        const TranscriberInfo info = {};
        transcriber->setTranscriberInfo(&info);
        transcriber->SetSpeakDict(nullptr, false);
        transcriber->Transcribe("Mr. <b>word \x07 a 1st $1 a@b http://c");
        TranscriberInfo copy;
        transcriber->getTranscriberInfo(&copy);
        transcriber->GetOutputMarkers(nullptr);
        transcriber->GetTranscription();
        transcriber->GenerateTimedMarkers(nullptr);
        transcriber->GetInfoString(nullptr);
        transcriber->GetInputChar(0);
    });
    const std::set<std::string> entered(lines.begin(), lines.end());
    std::istringstream operations(
        "setTranscriberInfo SetSpeakDict Transcribe SetInput Translate convert_word "
        "convert_abbreviation TranscribeWord LookupWord CheckPronunciationXML "
        "CheckCutMarkerXML CheckPauseXML CheckSoundXML convert_ascii SpeakAsciiChar "
        "convert_number SpeakOrdinal convert_money SpeakCardinal convert_email "
        "convert_web convert_url SpellWord getTranscriberInfo GetOutputMarkers "
        "GetTranscription GenerateTimedMarkers GetInfoString GetInputChar Release");
    for (std::string operation; operations >> operation;) {
        EXPECT_TRUE(entered.contains("Enter: CTranscriber::" + operation)) << operation;
    }
}

TEST(Transcriber, TokensOfAnyTextAreInOrder) {
    std::mt19937 random(4);
    std::vector<std::string> pieces;
    std::istringstream list(
        "<;>;cut;pron;aux;pause;laugh;<pron a=\"red\">;<cut ms=\"12\">;"
        "<auto-breath-detection>;{;};[;];http://;www;@;.;$;1;0;99;,;st;th;';\";a;bc;U.S.;"
        "Mr.; ;\n;-;%;=;");
    for (std::string piece; std::getline(list, piece, ';');) {
        pieces.push_back(piece);
    }
    const auto transcriber = EnglishTranscriber("RED=rEHd\nA=AH\nA=EY\n");
    testing::internal::CaptureStderr();
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        for (size_t count = random() % 40; count > 0; --count) {
            text += random() % 4 != 0 ? pieces[random() % pieces.size()]
                                      : std::string(1, static_cast<char>(1 + random() % 255));
        }
        SCOPED_TRACE(text);
        uint32_t place = 0;
        for (const CTxMarker& token : TokensOf(*transcriber, text.c_str())) {
            ASSERT_LE(place, token.text_start);
            ASSERT_LE(token.text_start, token.text_end);
            ASSERT_LE(token.text_end, text.size() + 1);
            ASSERT_TRUE(token.kind >= kWordToken && token.kind <= kPunctuationToken);
            ASSERT_EQ(token.groups != nullptr, token.group_count > 0);
            place = token.text_end;
        }
    }
    testing::internal::GetCapturedStderr();
}

} // namespace
} // namespace tessarin
