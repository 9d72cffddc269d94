#include "session/spoken_language.h"

#include <limits>

#include "session/locale_use.h"
#include "text/transcriber.h"

namespace tessarin {

error_code CheckText(std::string_view text) {
    // Places are 32-bit numbers, and what is said of a text may be longer than the text.
    constexpr size_t kLongest = static_cast<size_t>(std::numeric_limits<int32_t>::max()) / 4;
    if (text.size() > kLongest) {
        return kOutOfRange;
    }
    return utf8::is_valid(text.begin(), text.end()) ? kNoError : kInvalidUtf8;
}

error_code ReadScriptOptions(const tessarin_script_options* given, text_reading& out) {
    if (given == nullptr) {
        return kNoError;
    }
    constexpr uint32_t kFlags = TESSARIN_SCRIPT_LITERAL | TESSARIN_SCRIPT_CUE_TIMES;
    if (given->size != sizeof *given || (given->flags & ~kFlags) != 0 ||
        given->format > TESSARIN_TEXTGRID_SCRIPT) {
        return kInvalidArgument;
    }
    out.isLiteral = (given->flags & TESSARIN_SCRIPT_LITERAL) != 0;
    out.script.hasCueTimes = (given->flags & TESSARIN_SCRIPT_CUE_TIMES) != 0;
    out.script.format = static_cast<script_format>(given->format);
    out.script.speaker = given->speaker != nullptr ? given->speaker : "";
    if (given->table == nullptr) {
        return kNoError;
    }
    out.hasOwnTable = true;
    out.ownTable = BuiltInEnglishScript();
    return out.ownTable.Add(given->table) == 0 ? kNoError : kInvalidFile;
}

bool CanReadScripts(const TranscriberInfo& info, const text_reading& how) {
    constexpr uint32_t kEnglish = 9;
    return info.language == kEnglish || info.language == 0 || how.hasOwnTable;
}

ScriptReading ReadScriptFor(IVisemixTranscriber* transcriber, std::string_view text,
                            const text_reading& how) {
    word_lookup isKnown;
    if (transcriber != nullptr) {
        // The pool makes its transcribers itself, so they are the library's own.
        isKnown = [own = static_cast<const CTranscriber*>(transcriber)](std::string_view word) {
            return own->Knows(InUpperCase(word));
        };
    }
    return ReadScript(text, how.hasOwnTable ? how.ownTable : BuiltInEnglishScript(), how.script,
                      isKnown);
}

SpokenLanguage::SpokenLanguage(tessarin_language& language, const char* text,
                               const text_reading& how)
    : info(language.info), borrowed(language), code(borrowed.GetCode()) {
    if (code == kNoError) {
        Read(text, how);
    }
}

void SpokenLanguage::Read(const char* text, const text_reading& how) {
    code = CheckText(text);
    if (code != kNoError) {
        return;
    }
    const LocaleUse use(info);
    code = RefusingBadUtf8([&] {
        spanText =
            how.isLiteral || !CanReadScripts(info, how)
                ? std::make_unique<SpanText>(text, info)
                : std::make_unique<SpanText>(text, ReadScriptFor(borrowed.Get(), text, how), info);
        borrowed.Get()->Transcribe(spanText->GetLocal().c_str());
        return kNoError;
    });
}

void SpokenLanguage::Transcribe(const std::string& local) {
    const LocaleUse use(info);
    borrowed.Get()->Transcribe(local.c_str());
}

} // namespace tessarin
