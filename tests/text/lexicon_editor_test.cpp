#include "text/lexicon/lexicon_editor.h"

#include "support/recording_sink.h"
#include "support/temp_file.h"
#include "text/lexicon_files.h"
#include "text/spoken.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>

namespace tessarin {
namespace {

using test::bytes;
using test::lexicon_image;
using test::TempFile;
using testing::ElementsAre;

std::unique_ptr<CLexiconEditor> Open(const bytes& file) {
    auto editor = std::make_unique<CLexiconEditor>();
    EXPECT_EQ(editor->Load(file.data(), static_cast<uint32_t>(file.size())), 0);
    return editor;
}

std::unique_ptr<CLexiconEditor> OpenText(const std::string& content) {
    return Open({content.begin(), content.end()});
}

std::unique_ptr<CLexiconEditor>
WithEntries(std::vector<std::pair<std::string, std::string>> entries) {
    lexicon_image image;
    image.entries = std::move(entries);
    return Open(image.Take());
}

std::vector<std::string> Records(ILexiconEditor& editor) {
    std::vector<std::string> lines;
    for (int32_t index = 0; index < editor.GetRecordCount(); ++index) {
        IPronunciationRecord* record = editor.GetRecordAt(index);
        lines.push_back(record->GetWord() + std::string("=") + record->GetPronunciationText());
    }
    return lines;
}

/// The pronunciation of the word's record, or "-".
std::string Find(ILexiconEditor& editor, const std::string& word, int32_t index = 0) {
    IPronunciationRecord* record =
        editor.FindRecord(word.data(), static_cast<int32_t>(word.size()), index);
    return record != nullptr ? record->GetPronunciationText() : "-";
}

/// What the editor's transcriber says for one word.
std::string Say(ILexiconEditor& editor, const char* text) {
    IVisemixTranscriber* transcriber = editor.GetTranscriber();
    transcriber->Transcribe(text);
    uint32_t count = 0;
    const CTxMarker* markers = transcriber->GetOutputMarkers(&count);
    const std::string said = count > 0 ? Pronunciation(markers[0]) : "";
    transcriber->Release();
    return said;
}

TEST(LexiconEditor, SortsWithoutRegardToCase) {
    const auto editor = WithEntries({{"b", "1"},
                                     {"Ab", "2"},
                                     {"B", "3"},
                                     {"a", "4"},
                                     {"aB", "5"},
                                     {"\xE4", "6"},
                                     {"b'", "7"},
                                     {"_", "8"},
                                     {"A", "9"}});
    EXPECT_THAT(Records(*editor),
                ElementsAre("_=8", "a=4", "A=9", "Ab=2", "aB=5", "b=1", "B=3", "b'=7", "\xE4=6"));
    EXPECT_EQ(editor->GetRecordAt(-1), nullptr);
    EXPECT_EQ(editor->GetRecordAt(9), nullptr);
}

// Kept: a new record goes before those of its word.
TEST(LexiconEditor, AddsInFrontAndAtOnce) {
    const auto editor = WithEntries({{"HELLO", "hEHlOW"}, {"world", "wERld"}});
    EXPECT_EQ(editor->AddRecord("hello", "hAHlOW"), 0);
    EXPECT_EQ(editor->AddRecord("KAT", "kEYt"), 0);
    EXPECT_THAT(Records(*editor),
                ElementsAre("hello=hAHlOW", "HELLO=hEHlOW", "KAT=kEYt", "world=wERld"));
    EXPECT_EQ(Find(*editor, "Hello"), "hAHlOW");
    EXPECT_EQ(Find(*editor, "Hello", 1), "hEHlOW");
    for (const int32_t index : {2, -1, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(Find(*editor, "Hello", index), "-") << index;
    }
    EXPECT_EQ(Find(*editor, "HELL"), "-");
    EXPECT_EQ(Find(*editor, ""), "-");
    EXPECT_EQ(Say(*editor, "hello"), "hAHlOW|hEHlOW");
    EXPECT_EQ(Say(*editor, "kat"), "kEYt");
    EXPECT_EQ(editor->FindRecord("KAT", 3, 0)->SetPronunciationText("kUWt"), 0);
    EXPECT_EQ(Say(*editor, "kat"), "kUWt");
}

// Kept: an empty pronunciation, asked for or stored, matches any.
TEST(LexiconEditor, Removes) {
    const auto editor = WithEntries({{"a", "1"}, {"a", "2"}, {"a", "3"}, {"b", "4"}, {"c", "5"}});
    EXPECT_EQ(editor->RemoveRecord("A", "9"), 3);
    EXPECT_EQ(editor->RemoveRecord("d", nullptr), 3);
    EXPECT_EQ(editor->RemoveRecord("", nullptr), 3);
    EXPECT_EQ(editor->RemoveRecord(nullptr, nullptr), 3);
    EXPECT_THAT(Records(*editor), ElementsAre("a=1", "a=2", "a=3", "b=4", "c=5"));
    EXPECT_EQ(editor->RemoveRecord("A", "2"), 0);
    EXPECT_THAT(Records(*editor), ElementsAre("a=1", "a=3", "b=4", "c=5"));
    EXPECT_EQ(editor->RemoveRecord("a", nullptr), 0);
    EXPECT_EQ(editor->RemoveRecord("a", ""), 0);
    EXPECT_EQ(editor->AddRecord("c", nullptr), 0);
    EXPECT_THAT(Records(*editor), ElementsAre("b=4", "c=", "c=5"));
    EXPECT_EQ(editor->RemoveRecord("c", "5"), 0);
    EXPECT_THAT(Records(*editor), ElementsAre("b=4", "c=5")) << "the first that is like it goes";
}

TEST(LexiconEditor, SavesAllThatItHolds) {
    lexicon_image image;
    image.flags = kLocaleStored | kInfoStringStored | kCodePageKnown | kCommentStored;
    image.section = test::TreeLanguage().Take();
    const auto editor = Open(image.Take());
    editor->AddRecord("kit", "kIHt");
    EXPECT_EQ(editor->RemoveRecord("take", nullptr), 0);
    const TempFile file(".lexicon");
    ASSERT_EQ(editor->Save(file.Path(), nullptr), 0);
    const std::string content = file.Content();
    const auto again = OpenText(content);
    EXPECT_EQ(Records(*again), Records(*editor));
    ASSERT_EQ(again->Save(file.Path(), nullptr), 0);
    const bytes header = image.Header();
    EXPECT_EQ(content.substr(0, header.size()), std::string(header.begin(), header.end()));
    EXPECT_EQ(file.Content().substr(0, content.size() - 16213),
              content.substr(0, content.size() - 16213))
        << "the same but for the filler, the language included";
}

// Kept: the words of a saved file are a lexicon text for a moment, with what that leaves out.
TEST(LexiconEditor, SavesNoRecordThatALexiconTextCannotHold) {
    const auto editor = WithEntries({{"empty", ""}, {"a=b", "c"}, {"kat", "kAEt"}, {" x", "k"}});
    const TempFile file(".lexicon");
    ASSERT_EQ(editor->Save(file.Path(), nullptr), 0);
    EXPECT_THAT(Records(*OpenText(file.Content())), ElementsAre("a=b=c", "kat=kAEt", "x=k"));
}

TEST(LexiconEditor, ReportsItsProgress) {
    std::vector<std::pair<std::string, std::string>> entries;
    for (int number = 0; number < 300; ++number) {
        entries.emplace_back("w" + std::to_string(number), "k");
    }
    const auto editor = WithEntries(entries);
    const TempFile file(".lexicon");
    test::recording_sink progress;
    ASSERT_EQ(editor->Save(file.Path(), &progress), 0);
    ASSERT_EQ(progress.calls.size(), 101u);
    EXPECT_EQ(progress.calls.front(), std::pair(0u, 100u));
    EXPECT_EQ(progress.calls.back(), std::pair(100u, 100u));
}

TEST(LexiconEditor, KeepsTheOldFileWhenItCannotSave) {
    const auto editor = WithEntries({{"kat", "kAEt"}});
    const std::string old = "the old file";
    const TempFile file(bytes(old.begin(), old.end()), ".lexicon");
    test::recording_sink progress(0);
    EXPECT_EQ(editor->Save(file.Path(), &progress), 5);
    EXPECT_EQ(file.Content(), old);
    EXPECT_EQ(editor->Save("no/such/folder/file", nullptr), 9);
    EXPECT_EQ(editor->Save(nullptr, nullptr), 9);
    CLexiconEditor empty;
    EXPECT_EQ(empty.Save(file.Path(), nullptr), 14);
    EXPECT_EQ(file.Content(), old);
}

// Kept: the progress of pruning goes to the standard output.
TEST(LexiconEditor, PrunesWhatTheRulesSay) {
    // By the rules: KAT is kAEt|kAET, since a list is a choice; KA is kAH, AKE is EYk.
    const auto editor = WithEntries({{"KA", "kAH"},
                                     {"AK", "AEg"},
                                     {"KAK", "kAEk"},
                                     {"KAKE", "kEYk"},
                                     {"kake", "kEYk"},
                                     {"at", "AE"},
                                     {"zzz", "z"},
                                     {"2", "AEk"},
                                     {"KAKK", ""}});
    testing::internal::CaptureStdout();
    editor->RemoveRedundantRecords();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "11%\n22%\n33%\n44%\n55%\n66%\n77%\n88%\n100%\n");
    EXPECT_THAT(Records(*editor),
                ElementsAre("2=AEk", "AK=AEg", "KAKE=kEYk", "kake=kEYk", "KAKK=", "zzz=z"))
        << "`at` goes: the first group of what the rules say is AE";
    EXPECT_EQ(Say(*editor, "ak"), "AEg") << "the list is in force again";
    EXPECT_EQ(Say(*editor, "kake"), "kEYk|kEYk");
    EXPECT_EQ(Say(*editor, "ka"), "kAH");
}

// Kept: the transcription is empty, and so is what is copied from it.
TEST(LexiconEditor, RulePronunciationIsEmpty) {
    const auto editor = WithEntries({{"kat", "kAEt"}});
    char buffer[4] = "old";
    EXPECT_EQ(editor->GetRulePronunciation("kat", buffer, 0), 0);
    EXPECT_EQ(editor->GetRulePronunciation("kat", nullptr, 4), 0);
    EXPECT_STREQ(buffer, "old");
    EXPECT_EQ(editor->GetRulePronunciation("kat", buffer, 4), 0);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(CLexiconEditor().GetRulePronunciation("kat", buffer, 4), 0);
}

TEST(LexiconEditor, LeavesItsTranscriberUsable) {
    auto editor = WithEntries({{"kat", "t"}});
    IVisemixTranscriber* transcriber = editor->GetTranscriber();
    editor.reset();
    transcriber->Transcribe("kat");
    uint32_t count = 0;
    const CTxMarker* markers = transcriber->GetOutputMarkers(&count);
    ASSERT_EQ(count, 1u);
    EXPECT_EQ(Pronunciation(markers[0]), "kAE t|T") << "by the rules alone";
    EXPECT_EQ(transcriber->Release(), 0);
}

// Kept: the lexicon that the transcriber sees is not owned by it.
TEST(LexiconEditor, IsALexicon) {
    const auto editor = WithEntries({{"kat", "kAEt"}, {"kat", "kAHt"}, {"no", ""}});
    ISpeakDict& dict = *editor;
    dict.Release();
    char out[16] = "old";
    EXPECT_TRUE(dict.LookupFirst("KAT", 3, out));
    EXPECT_STREQ(out, "kAEt");
    EXPECT_TRUE(dict.LookupFirst("no", 2, out));
    EXPECT_STREQ(out, "");
    EXPECT_FALSE(dict.LookupFirst("ka", 2, out));
    CPronunciationRec record = {};
    ASSERT_TRUE(dict.GetPronunciation("Kat", 3, 1, &record));
    EXPECT_EQ(std::string(record.word, record.word_length), "kat");
    EXPECT_EQ(std::string(record.pronunciation, record.pronunciation_length), "kAHt");
    EXPECT_FALSE(dict.GetPronunciation("kat", 3, 2, &record));
    EXPECT_FALSE(dict.Reserved2() || dict.Reserved4() || dict.Reserved6());
}

/// Entries of a file may share their texts: 8000 words of 65535 phonemes fit a file of a kilobyte.
TEST(LexiconEditor, CopiesNoTextBeforeItChanges) {
    constexpr int32_t kNumEntries = 8000;
    const std::string block(UINT16_MAX, 'k');
    test::ByteBuilder lexicon;
    lexicon.U32(static_cast<uint32_t>(block.size())).Text(block).U32(kNumEntries);
    for (int32_t entry = 0; entry < kNumEntries; ++entry) {
        lexicon.U32(0).U16(1).U32(0).U16(UINT16_MAX);
    }
    const lexicon_image image;
    const auto editor = Open(image.WithPayload(
        test::ByteBuilder().Bytes(image.section).U32(9).Bytes(lexicon.Take()).Take()));
    ASSERT_EQ(editor->GetRecordCount(), kNumEntries);
    const auto lookUp = [&](int32_t index) {
        CPronunciationRec record = {};
        EXPECT_TRUE(editor->GetPronunciation("k", 1, index, &record)) << index;
        return record;
    };
    const CPronunciationRec first = lookUp(0);
    EXPECT_EQ(first.word, first.pronunciation);
    EXPECT_EQ(lookUp(kNumEntries - 1).pronunciation, first.pronunciation);
    EXPECT_EQ(editor->GetRecordAt(1)->GetPronunciationText(), block);
    EXPECT_EQ(editor->GetRecordAt(2)->SetPronunciationText("tAHk"), 0);
    EXPECT_STREQ(editor->GetRecordAt(2)->GetPronunciationText(), "tAHk");
    EXPECT_STREQ(editor->GetRecordAt(2)->GetWord(), "k");
    EXPECT_EQ(lookUp(3).pronunciation, first.pronunciation);
}

TEST(LexiconEditor, AgreesWithAPlainList) {
    std::mt19937 random(7);
    const auto editor = WithEntries({});
    std::vector<std::pair<std::string, std::string>> plain; // sorted by hand
    for (int step = 0; step < 3000; ++step) {
        const std::string word = {"ab"[random() % 2], "cd"[random() % 2], "efgh"[random() % 4]};
        const std::string phonemes = std::to_string(random() % 3);
        if (random() % 3 != 0) {
            const auto place = std::find_if(plain.begin(), plain.end(),
                                            [&](const auto& entry) { return entry.first >= word; });
            plain.emplace(place, word, phonemes);
            ASSERT_EQ(editor->AddRecord(word.c_str(), phonemes.c_str()), 0);
        } else {
            const auto place = std::find(plain.begin(), plain.end(), std::pair(word, phonemes));
            ASSERT_EQ(editor->RemoveRecord(word.c_str(), phonemes.c_str()),
                      place == plain.end() ? 3 : 0);
            if (place != plain.end()) {
                plain.erase(place);
            }
        }
    }
    std::vector<std::string> lines;
    for (const auto& [word, phonemes] : plain) {
        lines.push_back(word + "=" + phonemes);
    }
    EXPECT_EQ(Records(*editor), lines);
}

} // namespace
} // namespace tessarin
