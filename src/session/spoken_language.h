#pragma once

#include <memory>
#include <string_view>

#include "session/script_transcriber.h"
#include "session/span_text.h"
#include "session/transcriber_pool.h"
#include "text/script/script_reader.h"

namespace tessarin {

/// How a text is read: as a script, or as it stands.
struct text_reading {
    bool isLiteral = false;
    bool hasOneReading = false; ///< of what may be said in several ways, the usual one
    script_options script;
    ScriptTable ownTable; ///< of the caller, on top of the built-in one
    bool hasOwnTable = false;
};

/// 0 for a text that can be read, 3 for one that is too long, and 20 for what is not UTF-8.
error_code CheckText(std::string_view text);

/// Copies the options; null gives the defaults. Returns 0, or 2 for a size, a flag or a format that
/// does not exist, and 12 for a table that does not read.
error_code ReadScriptOptions(const tessarin_script_options* given, text_reading& out);

/// Whether a text in the language can be read as a script: there is a table for it. A text of words
/// alone has the built-in English rules.
bool CanReadScripts(const TranscriberInfo& info, const text_reading& how);

/// Reads a script for a language. Its transcriber, which may be null, knows which words exist, and
/// guesses how others are said.
ScriptReading ReadScriptFor(IVisemixTranscriber* transcriber, std::string_view text,
                            const text_reading& how);

/// Whether the language has a word, in any case, among the lexicon's and the user's own.
error_code FindWord(tessarin_language& language, const char* word, bool& isKnown);

/// A transcriber on loan that was given a text in its own code page.
class SpokenLanguage {
public:
    SpokenLanguage(tessarin_language& language, const char* text, const text_reading& how);

    /// 0, or the code of what prevented the transcription.
    error_code GetCode() const { return code; }
    IVisemixTranscriber& GetTranscriber() const { return script ? *script : *borrowed.Get(); }
    /// Which readings were said, or null for a literal text.
    IScriptTranscriber* GetReadings() const { return script.get(); }
    const SpanText& GetText() const { return *spanText; }
    /// Transcribes another text, which is in the code page already.
    void Transcribe(const std::string& local);

private:
    void Read(const char* text, const text_reading& how);

    const TranscriberInfo& info;
    BorrowedTranscriber borrowed;
    std::shared_ptr<const SpanText> spanText;
    std::unique_ptr<ScriptTranscriber> script; ///< goes before the one on loan
    error_code code;
};

} // namespace tessarin
