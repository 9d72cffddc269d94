#include "apps/train/g2p_lexicon.h"

#include <cstdint>
#include <memory>
#include <utility>

#include "base/byte_cursor.h"
#include "base/text_copy.h"
#include "base/whole_file.h"
#include "text/lexicon/lexicon_file.h"
#include "text/lexicon/lexicon_file_format.h"

namespace tessarin::training {
namespace {

constexpr uint32_t kEnglish = 9;
constexpr uint32_t kWesternEurope = 1252;

bool IsLexiconFile(const uint8_t* data, uint32_t size) {
    return ByteCursor(data, size).ReadU32() == kLexiconMagic;
}

error_code ReadText(const uint8_t* text, uint32_t size, counted_ptr<CTranscriber>& transcriber,
                    CCmDict*& dict) {
    if (size > uint32_t{INT32_MAX}) {
        return kInvalidFile;
    }
    auto lexicon = std::make_unique<CCmDict>();
    if (!lexicon->LoadText(reinterpret_cast<const char*>(text), static_cast<int32_t>(size))) {
        return kOutOfMemory;
    }
    auto language = std::make_unique<CGraphemeToPhoneRules<char>>();
    language->LoadBuiltinEnglish();
    dict = lexicon.get();
    transcriber = counted_ptr<CTranscriber>::Adopt(
        new CTranscriber(speak_dict_ptr(lexicon.release()), std::move(language)));
    TranscriberInfo info = {};
    static_cast<void>(CopyText(info.name, "English"));
    info.language = kEnglish;
    info.code_page = kWesternEurope;
    info.flags = kCodePageKnown;
    transcriber->setTranscriberInfo(&info);
    return kNoError;
}

} // namespace

error_code CLearnerLexicon::Open(const char* path) {
    uint32_t size = 0;
    const auto content = ReadWholeFile(path, &size, false);
    if (content == nullptr) {
        return kFileNotFound;
    }
    return IsLexiconFile(content.get(), size)
               ? LoadTranscriberAndDict(content.get(), size, transcriber, dict)
               : ReadText(content.get(), size, transcriber, dict);
}

error_code CLearnerLexicon::Save(const char* path,
                                 const CGraphemeToPhoneRules<char>& language) const {
    TranscriberInfo info = {};
    transcriber->getTranscriberInfo(&info);
    uint32_t length = 0;
    const char* infoString = transcriber->GetInfoString(&length);
    return WriteLexiconFile(info, language, *dict, path, {infoString, length});
}

} // namespace tessarin::training
