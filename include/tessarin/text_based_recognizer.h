#pragma once

#include <cstdint>

#include "tessarin/error_codes.h"
#include "tessarin/export.h"
#include "tessarin/observation_stream.h"
#include "tessarin/progress_sink.h"
#include "tessarin/sync_results.h"
#include "tessarin/transcriber.h"

namespace tessarin {

/// Finds when each phoneme and word of a text was spoken. Reusable; serves one call at a time and
/// keeps none of the objects that a call is given.
class ITextBasedPhnRecognizer {
public:
    virtual ~ITextBasedPhnRecognizer() = default;

    /// Aligns `text` (null: what `transcriber` has already transcribed) to the audio of `stream`,
    /// a fresh stream for `model`, and appends phonemes and words to `results`; clear it first.
    /// `progress` may be null. Returns 0; 1 without memory; 2 without stream, model, transcriber or
    /// results, or for a stream without a rate; 3 for a model of more than 256 phonemes or of more
    /// than 256 states each, or, when asked for sentences, of more than 85 or of other than 3; 5
    /// when cancelled; 8 when the search lost the text, with the markers up to there; or the code
    /// of a failed read. Where cuts divide the text, each part is aligned whatever becomes of the
    /// others, and the code is that of the last part that failed.
    virtual error_code RecognizePhonemes(IObservationStream* stream, CAccousticHMM* model,
                                         const char* text, IVisemixTranscriber* transcriber,
                                         ProgressSink* progress,
                                         ISyncResultsCollection* results) = 0;
    /// RecognizePhonemes with the text that `transcriber` has already transcribed.
    virtual error_code AlignTranscription(IObservationStream* stream, CAccousticHMM* model,
                                          IVisemixTranscriber* transcriber, ProgressSink* progress,
                                          ISyncResultsCollection* results) = 0;
    /// The search window in states, clamped to 500 at least and 8000 at most; 2000 at first.
    virtual void SetBeamWidth(int32_t width) = 0;
    /// The search window in states.
    virtual int32_t GetBeamWidth() = 0;
    /// Sets each option that is not 0 (null): the beam width, how many hypotheses the disk-backed
    /// search keeps in a frame, its memory in bytes, its logarithmic beam (-200 or below), and its
    /// file. Returns 2 when `keptPerFrame` is not below `beamWidth` or the logarithmic beam is
    /// above -200; the other options are set all the same.
    virtual error_code SetSearchOptions(uint16_t beamWidth, uint16_t keptPerFrame,
                                        uint32_t trellisMemory, double logBeam,
                                        const char* trellisFile) = 0;
    /// `retry`: a search that lost the text slides its window ahead instead of ending; where there
    /// is nothing ahead either, it ends too, after `progress` was asked for a while. `wordsOnly`:
    /// no phonemes in the results.
    ///
    /// Both together (`retry` being 1): search for the sentences of the text, in audio that may
    /// hold anything else, too. Each sentence that is found becomes one word marker without `text`,
    /// over the sentence's place in the transcription text; what is not found has none. A sentence
    /// ends at a full stop, a question or exclamation mark. They are found in the order of the
    /// text, and none when the first one is not there. The search loads duration limits of its own
    /// into the model, where they stay.
    ///
    /// Returns whether phonemes are kept.
    virtual uint8_t SetOutputOptions(uint8_t retry, uint8_t wordsOnly) = 0;
};

} // namespace tessarin

/// Makes a recognizer in `*out`, freed by DestroyTextBasedRecognizer. Always returns 0; without
/// memory `*out` is null.
TESSARIN_API int32_t CreateTextBasedRecognizer(tessarin::ITextBasedPhnRecognizer** out);

/// Frees a recognizer; null is allowed.
TESSARIN_API void DestroyTextBasedRecognizer(tessarin::ITextBasedPhnRecognizer* recognizer);
