#include "text/lexicon/lexicon_file.h"

#include "base/byte_writer.h"
#include "base/little_endian.h"
#include "support/temp_file.h"
#include "text/default_transcriber.h"
#include "text/lexicon_files.h"
#include "text/spoken.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace tessarin {
namespace {

using test::bytes;
using test::lexicon_image;
using test::TempFile;

uint32_t SizeOf(const bytes& file) {
    return static_cast<uint32_t>(file.size());
}

struct header {
    int32_t code = -1;
    TranscriberInfo info = {};
    std::string infoString;
    size_t length = 0;
};

header ReadHeader(const bytes& file) {
    header read;
    read.info.language = 77;
    const uint8_t* position = file.data();
    uint32_t remaining = SizeOf(file);
    read.code = ReadLexiconHeader(&position, &remaining, &read.info, &read.infoString);
    read.length = file.size() - remaining;
    if (read.code != 0) {
        EXPECT_EQ(read.info.language, 77u) << "a failure changes nothing";
        EXPECT_EQ(position, file.data());
    }
    return read;
}

counted_ptr<CTranscriber> Load(const bytes& file) {
    counted_ptr<CTranscriber> transcriber;
    EXPECT_EQ(LoadTranscriber(file.data(), SizeOf(file), transcriber), 0);
    return transcriber;
}

/// The code of a file that must not read, in a buffer of its own size.
int32_t CodeOfBad(bytes file) {
    file.shrink_to_fit();
    counted_ptr<CTranscriber> transcriber;
    const int32_t code = LoadTranscriber(file.data(), SizeOf(file), transcriber);
    EXPECT_EQ(transcriber.get(), nullptr);
    CCmDict* dict = nullptr;
    const int32_t editorCode = LoadTranscriberAndDict(file.data(), SizeOf(file), transcriber, dict);
    EXPECT_EQ(editorCode, code);
    EXPECT_EQ(transcriber.get(), nullptr);
    EXPECT_EQ(dict, nullptr);
    return code;
}

std::string Say(CTranscriber& transcriber, const char* text) {
    std::string said;
    for (const CTxMarker& marker : TokensOf(transcriber, text)) {
        said += (said.empty() ? "" : " / ") + Pronunciation(marker);
    }
    return said;
}

TEST(LexiconHeader, EveryCombinationOfFlags) {
    for (uint32_t flags = 0; flags < 64; ++flags) {
        SCOPED_TRACE(flags);
        lexicon_image image;
        image.flags = flags;
        const header read = ReadHeader(image.Take());
        ASSERT_EQ(read.code, 0);
        EXPECT_STREQ(read.info.name, "Tiny");
        EXPECT_EQ(read.info.language, 9u);
        EXPECT_EQ(read.info.flags, flags | kCodePageKnown);
        EXPECT_EQ(read.info.code_page, 1252u);
        EXPECT_STREQ(read.info.locale, (flags & kLocaleStored) != 0 ? "C" : "");
        EXPECT_EQ(read.infoString, (flags & kInfoStringStored) != 0 ? "made by hand" : "");
        EXPECT_STREQ(read.info.comment, (flags & kCommentStored) != 0 ? "for tests" : "");
        EXPECT_EQ(read.length, image.Header().size());
        EXPECT_EQ(ReadHeader(image.Header()).code, 0) << "the header is all that is needed";
    }
}

// Kept: a code page that was derived is known from then on.
TEST(LexiconHeader, DerivesTheCodePage) {
    for (uint32_t language = 0; language < 40; ++language) {
        SCOPED_TRACE(language);
        lexicon_image image;
        image.language = language;
        image.flags = 0;
        const TranscriberInfo info = ReadHeader(image.Take()).info;
        const std::string western = ",0,6,7,9,10,11,12,16,19,20,22,29,";
        const bool isWestern =
            western.find("," + std::to_string(language) + ",") != std::string::npos;
        const bool isCentral = language == 5 || language == 21;
        const uint32_t codePage = isWestern ? 1252 : isCentral ? 1250 : language == 25 ? 1251 : 0;
        EXPECT_EQ(info.code_page, codePage);
        EXPECT_EQ(info.flags, codePage != 0 ? kCodePageKnown : 0u);
    }
}

// Kept: a file that ends before its version answers as a newer version does.
TEST(LexiconHeader, Codes) {
    lexicon_image image;
    image.flags = kLocaleStored | kInfoStringStored | kCodePageKnown | kCommentStored;
    const bytes file = image.Header();
    for (size_t size = 0; size < file.size(); ++size) {
        SCOPED_TRACE(size);
        const bytes cut(file.begin(), file.begin() + static_cast<ptrdiff_t>(size));
        EXPECT_EQ(ReadHeader(cut).code, size >= 4 && size < 6 ? 21 : 12);
    }
    bytes changed = file;
    changed[3] = 'E';
    EXPECT_EQ(ReadHeader(changed).code, 12);
    for (const int16_t version : std::initializer_list<int16_t>{-5, 0, 1, 2, 3, 300}) {
        image.version = static_cast<uint16_t>(version);
        EXPECT_EQ(ReadHeader(image.Take()).code, version < 3 ? 0 : 21) << version;
    }
}

TEST(LexiconHeader, TextsMustFitTheirFields) {
    for (std::string lexicon_image::*field :
         {&lexicon_image::name, &lexicon_image::locale, &lexicon_image::comment}) {
        lexicon_image image;
        image.flags = kLocaleStored | kCommentStored;
        image.*field = std::string(63, 'x');
        EXPECT_EQ(ReadHeader(image.Take()).code, 0);
        image.*field = std::string(64, 'x');
        EXPECT_EQ(ReadHeader(image.Take()).code, 12);
    }
    lexicon_image image;
    image.flags = kInfoStringStored;
    image.infoString = std::string(5000, 'i');
    EXPECT_EQ(ReadHeader(image.Take()).infoString, image.infoString);
}

TEST(LexiconFile, MakesATranscriber) {
    lexicon_image image;
    image.flags = kInfoStringStored;
    const auto transcriber = Load(image.Take());
    ASSERT_NE(transcriber.get(), nullptr);
    EXPECT_EQ(Say(*transcriber, "at kat take tat"), "AEt / kAEt|kAHt / tEYk / t|T AE t|T");
    TranscriberInfo info;
    transcriber->getTranscriberInfo(&info);
    EXPECT_STREQ(info.name, "Tiny");
    uint32_t length = 0;
    const char* infoString = transcriber->GetInfoString(&length);
    EXPECT_EQ(std::string(infoString, length), "made by hand");
    image.section = test::TreeLanguage().Take();
    EXPECT_EQ(Say(*Load(image.Take()), "kat takt"), "kAEt|kAHt / tAHkt");
}

TEST(LexiconFile, IgnoresWhatStandsBehind) {
    const lexicon_image image;
    bytes file = image.Take();
    file.resize(file.size() + 16213, 0xA5);
    EXPECT_EQ(Say(*Load(file), "at"), "AEt");
    bytes payload = image.Payload();
    payload.resize(payload.size() + 20, 0xA5);
    EXPECT_EQ(Say(*Load(image.WithPayload(payload)), "at"), "AEt");
}

// Kept: such a payload is refused here, while the editor opens it.
TEST(LexiconFile, RefusesAnUnsupportedPayload) {
    lexicon_image image;
    image.flags = kUnsupportedPayload;
    const bytes file = image.Take();
    counted_ptr<CTranscriber> transcriber;
    EXPECT_EQ(LoadTranscriber(file.data(), SizeOf(file), transcriber), 6);
    EXPECT_EQ(transcriber.get(), nullptr);
    CCmDict* dict = nullptr;
    EXPECT_EQ(LoadTranscriberAndDict(file.data(), SizeOf(file), transcriber, dict), 0);
    EXPECT_EQ(dict->GetEntries().size(), 4u);
    bytes cut(file.begin(), file.end() - 1);
    transcriber = nullptr;
    EXPECT_EQ(LoadTranscriber(cut.data(), SizeOf(cut), transcriber), 12);
}

TEST(LexiconFile, RefusesACutAtEveryByte) {
    const lexicon_image image;
    const bytes file = image.Take();
    for (size_t size = 0; size < file.size(); ++size) {
        SCOPED_TRACE(size);
        const bytes cut(file.begin(), file.begin() + static_cast<ptrdiff_t>(size));
        EXPECT_EQ(CodeOfBad(cut), size == 4 || size == 5 ? 21 : 12);
    }
    const bytes payload = image.Payload();
    for (size_t size = 0; size < payload.size(); ++size) {
        SCOPED_TRACE(size);
        const bytes cut(payload.begin(), payload.begin() + static_cast<ptrdiff_t>(size));
        EXPECT_EQ(CodeOfBad(image.WithPayload(cut)), 12);
    }
}

TEST(BinaryLexicon, RefusesSizesOffsetsAndCountsThatLie) {
    const lexicon_image image;
    const bytes lexicon = image.Lexicon();
    const size_t countPlace = 4 + LoadLittleEndian<uint32_t>(lexicon.data());
    const auto read = [](const bytes& binary) {
        CCmDict dict;
        const uint8_t* position = binary.data();
        uint32_t remaining = SizeOf(binary);
        const int32_t code = dict.ReadBinary(&position, &remaining);
        if (code != 0) {
            EXPECT_EQ(dict.GetEntries().size(), 0u);
            CPronunciationRec record;
            EXPECT_FALSE(dict.GetPronunciation("at", 2, 0, &record));
        }
        return code;
    };
    const auto withU32 = [&](size_t place, uint32_t value) {
        bytes changed = lexicon;
        StoreLittleEndian(changed.data() + place, value);
        return read(changed);
    };
    EXPECT_EQ(read(lexicon), 0);
    for (const uint32_t size : {0xFFFFFFFFu, 0x80000000u, 0x7FFFFFFFu, SizeOf(lexicon)}) {
        EXPECT_EQ(withU32(0, size), 12) << size;
    }
    for (const uint32_t count : {5u, 0x15555556u, 0x7FFFFFFFu}) {
        EXPECT_EQ(withU32(countPlace, count), 12) << count;
    }
    for (const uint32_t count : {0u, 0x80000000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(withU32(countPlace, count), 0) << "there are no entries, " << count;
    }
    const uint32_t blockSize = LoadLittleEndian<uint32_t>(lexicon.data());
    for (const size_t field : {0u, 6u}) {
        for (const uint32_t offset : {blockSize, 0x7FFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFEu}) {
            EXPECT_EQ(withU32(countPlace + 4 + field, offset), 12) << offset;
        }
        bytes changed = lexicon;
        StoreLittleEndian(changed.data() + countPlace + 8 + field, uint16_t{0xFFFF});
        EXPECT_EQ(read(changed), 12);
    }
}

/// A lexicon whose entries all have the same long word and phonemes.
bytes SharedText(uint32_t numEntries) {
    constexpr uint16_t kLength = 0xFFFF;
    ByteWriter binary;
    binary.WriteU32(kLength);
    binary.WriteBytes(bytes(kLength, 'a'));
    binary.WriteU32(numEntries);
    for (uint32_t entry = 0; entry < numEntries; ++entry) {
        for (int text = 0; text < 2; ++text) {
            binary.WriteU32(0);
            binary.WriteU16(kLength);
        }
    }
    return {binary.Content().begin(), binary.Content().end()};
}

TEST(BinaryLexicon, EntriesShareTextWithinBounds) {
    constexpr uint32_t kTooMany = 16385; // twice 65535 bytes for each make more than 2 GiB
    for (const uint32_t numEntries : {100u, kTooMany}) {
        const bytes binary = SharedText(numEntries);
        const uint8_t* position = binary.data();
        uint32_t remaining = SizeOf(binary);
        CCmDict dict;
        EXPECT_EQ(dict.ReadBinary(&position, &remaining), numEntries < kTooMany ? 0 : 12);
        EXPECT_EQ(dict.GetEntries().size(), numEntries < kTooMany ? numEntries : 0);
    }
}

TEST(BinaryLexicon, GivesTheEntriesBackInTheirOrder) {
    const std::string text = "b=k\nA=t\nfoo\nbar=d\na=p\nlong=" + std::string(70000, 'x') + "\n";
    CCmDict dict;
    ASSERT_TRUE(dict.LoadText(text.data(), static_cast<int32_t>(text.size())));
    ByteWriter written;
    ASSERT_TRUE(dict.WriteBinary(written));
    CCmDict copy;
    const uint8_t* position = written.Content().data();
    auto remaining = static_cast<uint32_t>(written.Size());
    ASSERT_EQ(copy.ReadBinary(&position, &remaining), 0);
    EXPECT_EQ(remaining, 0u);
    ASSERT_EQ(copy.GetEntries().size(), 5u);
    for (size_t number = 0; number < 5; ++number) {
        const CPronunciationRec& first = dict.GetEntries()[number];
        const CPronunciationRec& second = copy.GetEntries()[number];
        EXPECT_EQ(WordOf(first), WordOf(second));
        EXPECT_EQ(std::string(first.pronunciation, first.pronunciation_length),
                  std::string(second.pronunciation, second.pronunciation_length));
    }
    CPronunciationRec record;
    EXPECT_TRUE(copy.GetPronunciation("FOO\nBAR", 7, 0, &record));
}

/// Writes what `file` holds to another file and returns that.
bytes WriteAgain(const bytes& file) {
    counted_ptr<CTranscriber> transcriber;
    CCmDict* dict = nullptr;
    EXPECT_EQ(LoadTranscriberAndDict(file.data(), SizeOf(file), transcriber, dict), 0);
    TranscriberInfo info;
    transcriber->getTranscriberInfo(&info);
    uint32_t length = 0;
    const char* infoString = transcriber->GetInfoString(&length);
    const TempFile written(".lexicon");
    EXPECT_EQ(WriteLexiconFile(info, transcriber->GetLanguageModule(), *dict, written.Path(),
                               {infoString, length}),
              0);
    const std::string content = written.Content();
    return {content.begin(), content.end()};
}

TEST(LexiconWriter, WritesWhatTheReaderReads) {
    for (uint32_t flags = 0; flags < 64; ++flags) {
        SCOPED_TRACE(flags);
        lexicon_image image;
        image.flags = flags;
        image.section = flags % 2 == 0 ? test::RuleLanguage().Take() : test::TreeLanguage().Take();
        const bytes written = WriteAgain(image.Take());
        image.flags |= kCodePageKnown;
        const bytes expected = image.Take();
        ASSERT_GE(written.size(), expected.size());
        EXPECT_EQ(bytes(written.begin(), written.begin() + std::ssize(expected)), expected);
    }
}

// Kept: filler follows a block below 16000 bytes, and none a larger one.
TEST(LexiconWriter, FillsSmallFiles) {
    lexicon_image image;
    EXPECT_EQ(WriteAgain(image.Take()).size(), image.Take().size() + 16213);
    uint32_t state = 1;
    for (int number = 0; number < 3000; ++number) {
        std::string word;
        for (int letter = 0; letter < 8; ++letter) {
            state = state * 1664525u + 1013904223u;
            word += static_cast<char>('a' + (state >> 27));
        }
        image.entries.emplace_back(word, word);
    }
    ASSERT_GT(image.Take().size(), 17000u);
    EXPECT_EQ(WriteAgain(image.Take()), image.Take());
}

TEST(LexiconWriter, AnswersNineWhereNoFileCanBe) {
    const auto transcriber = EnglishTranscriber();
    const CCmDict dict;
    EXPECT_EQ(WriteLexiconFile({}, transcriber->GetLanguageModule(), dict, "no/such/folder/x", ""),
              9);
}

} // namespace
} // namespace tessarin
