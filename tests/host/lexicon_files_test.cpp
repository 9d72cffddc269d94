#include <fstream>
#include <iterator>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "tessarin/tessarin.h"

namespace {

const char* const kLexicon = TESSARIN_SOURCE_DIR "/data/en-us.lexicon";

TEST(LexiconFiles, GiveATranscriberThatKnowsTheirWords) {
    std::ifstream file(kLexicon, std::ios::binary);
    const std::string image{std::istreambuf_iterator<char>(file), {}};
    const auto size = static_cast<uint32_t>(image.size());
    tessarin::TranscriberInfo info = {};
    ASSERT_EQ(GetTranscriberInfo(image.data(), size, &info), 0);
    EXPECT_EQ(info.language, 9u);
    EXPECT_EQ(info.code_page, 1252u);
    tessarin::IVisemixTranscriber* transcriber = nullptr;
    ASSERT_EQ(CreateTranscriberFromLexicon(image.data(), size, &transcriber), 0);
    transcriber->Transcribe("tomato");
    uint32_t count = 0;
    const tessarin::CTxMarker* markers = transcriber->GetOutputMarkers(&count);
    ASSERT_EQ(count, 1u);
    ASSERT_EQ(markers[0].groups[0].alternative_count, 2);
    EXPECT_STREQ(markers[0].groups[0].alternatives[0], "tAHmEYtOW");
    DestroyTranscriber(transcriber);
}

TEST(LexiconFiles, TellHowOtherWordsAreSaid) {
    tessarin::IVisemixTranscriber* transcriber = nullptr;
    ASSERT_EQ(CreateTranscriberFromLexiconFile(kLexicon, &transcriber), 0);
    const std::pair<const char*, const char*> cases[] = {
        {"doomscrolling", "dUWmskrOWlIHNG"},     {"phishers", "fIHSHERz"},
        {"unfriendliest", "AHnfrEHndlIYAHst"},   {"jalape\xF1oing", "hAElAHpEHnOWIHNG"},
        {"O'Quillfeather's", "OWkwIHlfEHDHERz"}, {"\"yeeted\"", "yIYtIHd"},
    };
    for (const auto& [word, phonemes] : cases) {
        transcriber->Transcribe(word);
        uint32_t count = 0;
        const tessarin::CTxMarker* markers = transcriber->GetOutputMarkers(&count);
        ASSERT_GE(count, 1u) << word;
        ASSERT_EQ(markers[0].group_count, 1) << word;
        EXPECT_STREQ(markers[0].groups[0].alternatives[0], phonemes) << word;
    }
    DestroyTranscriber(transcriber);
}

TEST(LexiconFiles, FailuresLeaveTheOutputNull) {
    auto* transcriber = reinterpret_cast<tessarin::IVisemixTranscriber*>(1);
    EXPECT_EQ(CreateTranscriberFromLexicon("TCIX", 4, &transcriber), 12);
    EXPECT_EQ(transcriber, nullptr);
    EXPECT_EQ(CreateTranscriberFromLexicon(nullptr, 4, &transcriber), 12);
    EXPECT_EQ(CreateTranscriberFromLexicon("TCID\3\0", 6, &transcriber), 21);
    EXPECT_EQ(CreateTranscriberFromLexiconFile("no such file", &transcriber), 10);
    EXPECT_EQ(CreateTranscriberFromLexiconFile(nullptr, &transcriber), 10);
    EXPECT_EQ(CreateTranscriberFromLexicon("TCIX", 4, nullptr), 2);
    EXPECT_EQ(CreateTranscriberFromLexiconFile(kLexicon, nullptr), 2);
    EXPECT_EQ(GetTranscriberInfo("TCID", 4, nullptr), 2);
    auto* editor = reinterpret_cast<tessarin::ILexiconEditor*>(1);
    EXPECT_EQ(CreateLexiconEditor("no such file", &editor), 10);
    EXPECT_EQ(editor, nullptr);
    EXPECT_EQ(CreateLexiconEditor(TESSARIN_SOURCE_DIR "/README.md", &editor), 12);
    EXPECT_EQ(CreateLexiconEditor(kLexicon, nullptr), 2);
}

} // namespace
