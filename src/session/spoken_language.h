#pragma once

#include <memory>

#include "session/span_text.h"
#include "session/transcriber_pool.h"
#include "text/script/script_reader.h"

namespace tessarin {

/// How a text is read: as a script, or as it stands.
struct text_reading {
    bool isLiteral = false;
    script_options script;
    ScriptTable ownTable; ///< of the caller, on top of the built-in one
    bool hasOwnTable = false;
};

/// Copies the options; null gives the defaults. Returns 0, or 2 for a size, a flag or a format that
/// does not exist, and 12 for a table that does not read.
error_code ReadScriptOptions(const tessarin_script_options* given, text_reading& out);

/// Reads a script for a language: of the words that may be said in two ways, its transcriber knows
/// which exist.
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
    IVisemixTranscriber& GetTranscriber() const { return *borrowed.Get(); }
    const SpanText& GetText() const { return *spanText; }
    /// Transcribes another text, which is in the code page already.
    void Transcribe(const std::string& local);

private:
    void Read(const char* text, const text_reading& how);

    const TranscriberInfo& info;
    BorrowedTranscriber borrowed;
    std::unique_ptr<SpanText> spanText;
    error_code code;
};

} // namespace tessarin
