#include "text/lexicon/lexicon_file.h"

#include "base/byte_writer.h"
#include "base/packed_file.h"
#include "base/text_copy.h"
#include "base/whole_file.h"
#include "text/lexicon/cm_dict.h"
#include "text/lexicon/lexicon_file_format.h"
#include "text/pronunciation/grapheme_to_phone_rules.h"

#include <cstdlib>
#include <memory>

namespace tessarin {
namespace {

void WriteHeader(const TranscriberInfo& info, std::string_view infoString, ByteWriter& file) {
    file.WriteU32(kLexiconMagic);
    file.WriteU16(static_cast<uint16_t>(kLexiconVersion));
    file.WriteString(FieldText(info.name));
    file.WriteU32(info.language);
    file.WriteU32(info.flags);
    if ((info.flags & kLocaleStored) != 0) {
        file.WriteString(FieldText(info.locale));
    }
    if ((info.flags & kInfoStringStored) != 0) {
        file.WriteString(infoString);
    }
    if ((info.flags & kCodePageKnown) != 0) {
        file.WriteU32(info.code_page);
    }
    if ((info.flags & kCommentStored) != 0) {
        file.WriteString(FieldText(info.comment));
    }
}

/// The block that holds all after the header; null when it gets too large.
std::unique_ptr<uint8_t[]> PackPayload(const TranscriberInfo& info,
                                       const CGraphemeToPhoneRules<char>& rules,
                                       const CCmDict& dict, uint32_t* packedSize) {
    ByteWriter payload;
    rules.WriteLetterToSound(payload);
    payload.WriteU32(info.language);
    dict.WriteBinary(payload);
    return PackBytes(payload.Content(), packedSize);
}

// Kept: a small file gets filler after its block, so that every lexicon file has some 16000 bytes
// at least, which other programs take for granted; readers never look at it.
void WriteFiller(ByteWriter& file) {
    for (size_t count = 0; count < kFillerSize; ++count) {
        file.WriteU8(static_cast<uint8_t>(std::rand()));
    }
}

} // namespace

error_code WriteLexiconFile(const TranscriberInfo& info, const CGraphemeToPhoneRules<char>& rules,
                            const CCmDict& dict, const char* path, std::string_view infoString) {
    uint32_t packedSize = 0;
    const std::unique_ptr<uint8_t[]> packed = PackPayload(info, rules, dict, &packedSize);
    if (packed == nullptr) {
        return kInvalidFile;
    }
    ByteWriter file;
    WriteHeader(info, infoString, file);
    file.WriteBytes({packed.get(), packedSize});
    if (packedSize < kSmallBlockSize) {
        WriteFiller(file);
    }
    return WriteWholeFile(path, file.Content());
}

} // namespace tessarin
