#pragma once

#include <cstdint>

#include "tessarin/error_codes.h"
#include "tessarin/export.h"
#include "tessarin/observation_stream.h"
#include "tessarin/progress_sink.h"
#include "tessarin/sync_results.h"

namespace tessarin {

/// Finds the phonemes of audio by itself, where there is no text, with the language statistics and
/// duration limits of the model if it has any. Reusable; serves one call at a time and keeps none
/// of the objects that a call is given.
class ITextlessPhnRecognizer {
public:
    virtual ~ITextlessPhnRecognizer() = default;

    /// Replaces `results` by the phonemes of `stream`, a fresh stream for `model`. `progress` may
    /// be null; otherwise it must outlive the stream. Returns 0; 1 without memory; 2 without
    /// stream, model or results; 3 for a model of more than 65535 states; 5 when cancelled; 8 when
    /// the search found no phonemes; or the code of a failed read.
    virtual error_code RecognizePhonemes(IObservationStream* stream, CAccousticHMM* model,
                                         ProgressSink* progress,
                                         ISyncResultsCollection* results) = 0;
};

} // namespace tessarin

/// Makes a recognizer in `*out`, freed by DestroyTextlessPhnRecognizer. Always returns 0; without
/// memory `*out` is null.
TESSARIN_API int32_t CreateTextlessPhnRecognizer(tessarin::ITextlessPhnRecognizer** out);

/// Frees a recognizer; null is allowed.
TESSARIN_API void DestroyTextlessPhnRecognizer(tessarin::ITextlessPhnRecognizer* recognizer);
