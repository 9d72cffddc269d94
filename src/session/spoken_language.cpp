#include "session/spoken_language.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "session/locale_use.h"
#include "text/pronunciation/tree_guesses.h"
#include "text/script/letter_case.h"
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

namespace {

/// What the tree makes of a word that neither the lexicon nor the user's table has, where it is not
/// sure.
void AddGuesses(const CTranscriber& transcriber, const ScriptTable& table, script_word& word) {
    constexpr size_t kMostGuesses = 3;
    const std::string upper = InLexiconCase(word.spoken);
    if (!std::ranges::all_of(upper, IsUpper) || transcriber.Knows(upper) ||
        table.Find(script_section::kAcronyms, upper) != nullptr) {
        return;
    }
    word.guesses = GuessPronunciations(transcriber.GetLanguageModule(), upper, kMostGuesses);
    if (word.guesses.size() < 2) {
        word.guesses.clear();
    }
}

/// The pool makes its transcribers itself, so they are the library's own.
const CTranscriber* OwnTranscriber(const IVisemixTranscriber* transcriber) {
    return static_cast<const CTranscriber*>(transcriber);
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
        isKnown = OwnTranscriber(borrowed.Get())->Knows(InLexiconCase(local.GetLocal()));
    }
    return borrowed.GetCode();
}

error_code ReadScriptOptions(const tessarin_script_options* given, text_reading& out) {
    if (given == nullptr) {
        return kNoError;
    }
    constexpr uint32_t kFlags =
        TESSARIN_SCRIPT_LITERAL | TESSARIN_SCRIPT_CUE_TIMES | TESSARIN_SCRIPT_ONE_READING;
    if (given->size != sizeof *given || (given->flags & ~kFlags) != 0 ||
        given->format > TESSARIN_TEXTGRID_SCRIPT) {
        return kInvalidArgument;
    }
    out.isLiteral = (given->flags & TESSARIN_SCRIPT_LITERAL) != 0;
    out.hasOneReading = (given->flags & TESSARIN_SCRIPT_ONE_READING) != 0;
    out.script.hasCueTimes = (given->flags & TESSARIN_SCRIPT_CUE_TIMES) != 0;
    out.script.format = static_cast<script_format>(given->format);
    out.script.speaker = given->speaker != nullptr ? given->speaker : "";
    if (given->table == nullptr) {
        return kNoError;
    }
    out.hasOwnTable = true;
    out.ownTable = BuiltInEnglishScript();
    return out.ownTable.Add(given->table).line == 0 ? kNoError : kInvalidFile;
}

bool CanReadScripts(const TranscriberInfo& info, const text_reading& how) {
    constexpr uint32_t kEnglish = 9;
    return info.language == kEnglish || info.language == 0 || how.hasOwnTable;
}

ScriptReading ReadScriptFor(IVisemixTranscriber* transcriber, std::string_view text,
                            const text_reading& how) {
    const CTranscriber* const own = OwnTranscriber(transcriber);
    word_lookup isKnown;
    if (own != nullptr) {
        isKnown = [own](std::string_view word) { return own->Knows(InLexiconCase(word)); };
    }
    const ScriptTable& table = how.hasOwnTable ? how.ownTable : BuiltInEnglishScript();
    ScriptReading reading = ReadScript(text, table, how.script, isKnown);
    for (script_word& word : reading.GetMutableWords()) {
        if (how.hasOneReading) {
            word.others.clear();
        } else if (own != nullptr) {
            AddGuesses(*own, table, word);
        }
    }
    return reading;
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
        if (how.isLiteral || !CanReadScripts(info, how)) {
            spanText = std::make_shared<const SpanText>(text, info);
        } else {
            spanText = std::make_shared<const SpanText>(
                text, ReadScriptFor(borrowed.Get(), text, how), info);
            script = MakeScriptTranscriber(*borrowed.Get(), spanText);
        }
        GetTranscriber().Transcribe(spanText->GetLocal().c_str());
        return kNoError;
    });
}

void SpokenLanguage::Transcribe(const std::string& local) {
    const LocaleUse use(info);
    GetTranscriber().Transcribe(local.c_str());
}

} // namespace tessarin
