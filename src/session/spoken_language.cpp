#include "session/spoken_language.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "session/locale_use.h"
#include "text/transcriber.h"

namespace tessarin {

namespace {

std::string InUpperCase(std::string_view word) {
    std::string upper(word);
    std::ranges::transform(upper, upper.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    return upper;
}

/// The language of the built-in table. A text of words alone has the built-in English rules.
bool IsEnglish(const TranscriberInfo& info) {
    constexpr uint32_t kEnglish = 9;
    return info.language == kEnglish || info.language == 0;
}

/// The pool makes its transcribers itself, so they are the library's own.
const CTranscriber& OwnTranscriber(const IVisemixTranscriber& transcriber) {
    return static_cast<const CTranscriber&>(transcriber);
}

} // namespace

error_code FindWord(tessarin_language& language, const char* word, bool& isKnown) {
    if (!utf8::is_valid(word, word + std::strlen(word))) {
        return kInvalidUtf8;
    }
    const BorrowedTranscriber borrowed(language);
    if (borrowed.GetCode() == kNoError) {
        const LocaleUse use(language.info);
        const SpanText local(word, language.info);
        isKnown = OwnTranscriber(*borrowed.Get()).Knows(InUpperCase(local.GetLocal()));
    }
    return borrowed.GetCode();
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

ScriptReading ReadScriptFor(IVisemixTranscriber* transcriber, std::string_view text,
                            const text_reading& how) {
    word_lookup isKnown;
    if (transcriber != nullptr) {
        isKnown = [&own = OwnTranscriber(*transcriber)](std::string_view word) {
            return own.Knows(InUpperCase(word));
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
    if (std::strlen(text) > static_cast<size_t>(std::numeric_limits<int32_t>::max()) / 4) {
        code = kOutOfRange;
        return;
    }
    if (!utf8::is_valid(text, text + std::strlen(text))) {
        code = kInvalidUtf8;
        return;
    }
    const LocaleUse use(info);
    code = RefusingBadUtf8([&] {
        spanText =
            how.isLiteral || (!IsEnglish(info) && !how.hasOwnTable)
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
