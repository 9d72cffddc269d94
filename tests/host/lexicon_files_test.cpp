#include <fstream>
#include <iterator>
#include <string>

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

TEST(LexiconFiles, EditorsChangeWhatTheTranscriberSays) {
    tessarin::ILexiconEditor* editor = nullptr;
    ASSERT_EQ(CreateLexiconEditor(kLexicon, &editor), 0);
    tessarin::IVisemixTranscriber* transcriber = editor->GetTranscriber();
    editor->AddRecord("tessarin", "tEHsAHrIHn");
    transcriber->Transcribe("Tessarin");
    uint32_t count = 0;
    const tessarin::CTxMarker* markers = transcriber->GetOutputMarkers(&count);
    ASSERT_EQ(count, 1u);
    EXPECT_STREQ(markers[0].groups[0].alternatives[0], "tEHsAHrIHn");
    DestroyTranscriber(transcriber);
    DestroyLexiconEditor(editor);
    DestroyLexiconEditor(nullptr);
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
