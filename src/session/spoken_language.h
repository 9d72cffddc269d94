#pragma once

#include <memory>

#include "session/span_text.h"
#include "session/transcriber_pool.h"

namespace tessarin {

/// A transcriber on loan that was given a text in its own code page.
class SpokenLanguage {
public:
    SpokenLanguage(tessarin_language& language, const char* text);

    /// 0, or the code of what prevented the transcription.
    error_code GetCode() const { return code; }
    IVisemixTranscriber& GetTranscriber() const { return *borrowed.Get(); }
    const SpanText& GetText() const { return *spanText; }
    /// Transcribes another text, which is in the code page already.
    void Transcribe(const std::string& local);

private:
    void Read(const char* text);

    const TranscriberInfo& info;
    BorrowedTranscriber borrowed;
    std::unique_ptr<SpanText> spanText;
    error_code code;
};

} // namespace tessarin
