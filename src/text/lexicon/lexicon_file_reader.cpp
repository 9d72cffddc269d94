#include "text/lexicon/lexicon_file.h"

#include "base/byte_cursor.h"
#include "base/guarded.h"
#include "base/packed_file.h"
#include "base/text_copy.h"
#include "text/lexicon/lexicon_file_format.h"
#include "text/transcriber.h"

#include <memory>
#include <utility>

namespace tessarin {
namespace {

/// Reads a text of the header into a field that it must fit.
template <size_t Size> void ReadField(ByteCursor& cursor, char (&field)[Size]) {
    if (!CopyText(field, cursor.ReadString())) {
        cursor.Fail();
    }
}

/// The code page that texts of a language are in; 0 where that is not known.
uint32_t CodePageOf(uint32_t language) {
    switch (language) {
    case 0:
    case 6:
    case 7:
    case 9:
    case 10:
    case 11:
    case 12:
    case 16:
    case 19:
    case 20:
    case 22:
    case 29:
        return 1252;
    case 5:
    case 21:
        return 1250;
    case 25:
        return 1251;
    default:
        return 0;
    }
}

// Kept: a code page that was derived counts as known from then on, so that a file that is saved
// again states it.
void DeriveCodePage(TranscriberInfo& info) {
    const uint32_t codePage = CodePageOf(info.language);
    if ((info.flags & kCodePageKnown) == 0 && codePage != 0) {
        info.code_page = codePage;
        info.flags |= kCodePageKnown;
    }
}

struct lexicon_header {
    TranscriberInfo info = {};
    std::string infoString;
};

void ReadFields(ByteCursor& cursor, lexicon_header& header) {
    TranscriberInfo& info = header.info;
    ReadField(cursor, info.name);
    info.language = cursor.ReadU32();
    info.flags = cursor.ReadU32();
    if ((info.flags & kLocaleStored) != 0) {
        ReadField(cursor, info.locale);
    }
    if ((info.flags & kInfoStringStored) != 0) {
        header.infoString = cursor.ReadString();
    }
    if ((info.flags & kCodePageKnown) != 0) {
        info.code_page = cursor.ReadU32();
    }
    if ((info.flags & kCommentStored) != 0) {
        ReadField(cursor, info.comment);
    }
}

// Kept: a file that ends before its version is of a newer version, as far as hosts can know.
error_code ReadHeader(ByteCursor& cursor, lexicon_header& header) {
    const uint32_t magic = cursor.ReadU32();
    if (cursor.Failed() || magic != kLexiconMagic) {
        return kInvalidFile;
    }
    const int16_t version = cursor.ReadI16();
    if (cursor.Failed() || version > kLexiconVersion) {
        return kNewerVersion;
    }
    ReadFields(cursor, header);
    if (cursor.Failed()) {
        return kInvalidFile;
    }
    DeriveCodePage(header.info);
    return kNoError;
}

/// What a payload holds.
struct language_parts {
    std::unique_ptr<CGraphemeToPhoneRules<char>> rules =
        std::make_unique<CGraphemeToPhoneRules<char>>();
    std::unique_ptr<CCmDict> dict = std::make_unique<CCmDict>();
};

/// Passes over the language, which the header says too. False when the payload ends before.
bool SkipLanguage(const uint8_t** position, uint32_t* remaining) {
    return BorrowedByteCursor(position, remaining).Skip(sizeof(uint32_t));
}

error_code ReadPayload(const uint8_t* position, uint32_t remaining, language_parts& parts) {
    const error_code code = parts.rules->LoadLetterToSound(&position, &remaining, nullptr);
    if (code != kNoError) {
        return code;
    }
    return SkipLanguage(&position, &remaining) ? parts.dict->ReadBinary(&position, &remaining)
                                               : kInvalidFile;
}

/// Makes the transcriber of a file whose header was read. `packed` is what stands after it.
error_code MakeTranscriber(const lexicon_header& header, std::span<const uint8_t> packed,
                           counted_ptr<CTranscriber>& out, CCmDict*& outDict) {
    uint32_t size = 0;
    const std::unique_ptr<uint8_t[]> payload = UnpackBytes(packed, &size);
    if (payload == nullptr) {
        return kInvalidFile;
    }
    language_parts parts;
    const error_code code = ReadPayload(payload.get(), size, parts);
    if (code != kNoError) {
        return code;
    }
    CCmDict* dict = parts.dict.get();
    auto transcriber = counted_ptr<CTranscriber>::Adopt(
        new CTranscriber(speak_dict_ptr(parts.dict.release()), std::move(parts.rules)));
    transcriber->setTranscriberInfo(&header.info);
    transcriber->SetInfoString(header.infoString);
    out = std::move(transcriber);
    outDict = dict;
    return kNoError;
}

} // namespace

error_code ReadLexiconHeader(const uint8_t** position, uint32_t* remaining, TranscriberInfo* info,
                             std::string* infoString) {
    ByteCursor cursor(*position, *remaining);
    lexicon_header header;
    const error_code code = ReadHeader(cursor, header);
    if (code == kNoError) {
        cursor.MoveTo(position, remaining);
        *info = header.info;
        *infoString = std::move(header.infoString);
    }
    return code;
}

error_code LoadTranscriber(const void* data, uint32_t size, counted_ptr<CTranscriber>& out) {
    ByteCursor cursor(data, size);
    lexicon_header header;
    const error_code code = ReadHeader(cursor, header);
    if (code != kNoError) {
        return code;
    }
    const std::span<const uint8_t> packed = cursor.ReadBytes(cursor.Remaining());
    if ((header.info.flags & kUnsupportedPayload) != 0) {
        uint32_t plainSize = 0;
        return UnpackBytes(packed, &plainSize) == nullptr ? kInvalidFile : kNotAvailable;
    }
    CCmDict* dict = nullptr;
    return MakeTranscriber(header, packed, out, dict);
}

error_code LoadTranscriberAndDict(const void* data, uint32_t size,
                                  counted_ptr<CTranscriber>& outTranscriber, CCmDict*& outDict) {
    outTranscriber = nullptr;
    outDict = nullptr;
    return Guarded([&] {
        ByteCursor cursor(data, size);
        lexicon_header header;
        const error_code code = ReadHeader(cursor, header);
        return code != kNoError ? code
                                : MakeTranscriber(header, cursor.ReadBytes(cursor.Remaining()),
                                                  outTranscriber, outDict);
    });
}

} // namespace tessarin
