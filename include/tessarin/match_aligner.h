#pragma once

#include <cstdint>

#include "tessarin/error_codes.h"
#include "tessarin/export.h"
#include "tessarin/observation_stream.h"
#include "tessarin/progress_sink.h"
#include "tessarin/sync_results.h"
#include "tessarin/transcriber.h"

namespace tessarin {

/// How far an alignment trusts the text.
enum match_mode : uint32_t {
    kMatchAuto = 0,  ///< as kMatchExact where the text is what was said, else as kMatchLoose
    kMatchExact = 1, ///< all of the text was said and nothing else, as ITextBasedPhnRecognizer
    kMatchLoose = 2, ///< words may be missing, and other speech may stand between them
};

/// Whether a text belongs to a recording.
enum match_verdict : int32_t {
    kMatchUnknown = 0,  ///< the model has no calibration, or no word was looked at
    kMatchGood = 1,     ///< all of it was said and nothing else
    kMatchDoubtful = 2, ///< words were not said, other speech was heard, or the sounds fit badly
    kMatchPoor = 3,     ///< it is hardly the text of this recording
};

/// A word of the text. Published layout.
struct match_word {
    uint32_t text_start; ///< its first byte in the transcriber's text
    uint32_t text_end;   ///< after it
    int32_t is_said;     ///< 1, or 0 for one that was not heard, which has no marker
    float confidence;    ///< how likely it is that it was said there, 0 to 1; -1 unknown
    float margin;        ///< how much likelier the audio is with the word than without it, as a
                         ///< natural logarithm, divided by the spread of its region: above 0 it
                         ///< speaks for the word; -1e9 for a word that was not looked at
};
static_assert(sizeof(match_word) == 20);

/// Speech that is not in the text. Published layout.
struct match_stretch {
    int32_t start_ms;    ///< where it begins
    int32_t end_ms;      ///< where it ends
    uint32_t text_start; ///< first byte of the token before which it was said, or the text's length
};
static_assert(sizeof(match_stretch) == 12);

/// How well a text and a recording fit. `fit` is the mean over the observations of speech of the
/// natural logarithm of their likelihood on the text's path, less that of the phonemes heard
/// without a text: the higher the better, and hardly above 0. Published layout.
struct match_summary {
    int32_t verdict;       ///< a match_verdict
    float score;           ///< how likely it is that the text belongs to the audio; -1 unknown
    int32_t is_loose;      ///< 1 when times are those of the search that may leave words out
    uint32_t words;        ///< of the text
    uint32_t unsaid;       ///< of them
    int32_t unscripted_ms; ///< of other speech
    float margin;          ///< mean of the words' margins, each held to 0 to 100
    float fit;             ///< as above
    float duration;        ///< mean distance of the phonemes' lengths from usual ones, in standard
                           ///< deviations: the lower the better; -1 unknown
    float spread;          ///< of the scores: 1 for voices that the model knows, up to 2.2
};
static_assert(sizeof(match_summary) == 40);

/// Aligns a text that need not be what was said, and judges each word. Serves one call at a time.
class IMatchAligner {
public:
    virtual ~IMatchAligner() = default;

    /// A match_mode; kMatchAuto at first. Returns 2 for another number.
    virtual error_code SetMode(uint32_t mode) = 0;
    /// As ITextBasedPhnRecognizer::SetBeamWidth, of the exact search.
    virtual void SetBeamWidth(int32_t width) = 0;
    /// As the first option of ITextBasedPhnRecognizer::SetOutputOptions.
    virtual void SetRetry(uint8_t retry) = 0;
    /// Reads what is known of the scores of `model`: the `length` bytes at `text`, from the file
    /// beside it. Returns 12 for a text that is not a calibration, 2 for one of another model and
    /// for null, and 1 without memory; the aligner then has none.
    virtual error_code SetCalibration(CAccousticHMM* model, const char* text, uint32_t length) = 0;
    /// As ITextBasedPhnRecognizer::RecognizePhonemes. Where the times are those of the loose
    /// search, words that were not said have no markers, other speech has the phonemes that were
    /// heard, and 8 is returned only when the exact search lost the text and less than half of the
    /// words were heard.
    virtual error_code Align(IObservationStream* stream, CAccousticHMM* model, const char* text,
                             IVisemixTranscriber* transcriber, ProgressSink* progress,
                             ISyncResultsCollection* results) = 0;
    /// The words of the last text in order, or null when there are none or the mode was exact;
    /// valid until the next call of Align. Those that were said have the word markers of the
    /// results, in order.
    virtual const match_word* GetWords(uint32_t* count) = 0;
    /// Other speech, in order of time; else as GetWords.
    virtual const match_stretch* GetUnscripted(uint32_t* count) = 0;
    /// A confidence for each phoneme marker of the results in their order: that of its word, or of
    /// free hearing; -1 for silence and where it is unknown. Else as GetWords.
    virtual const float* GetPhonemeConfidences(uint32_t* count) = 0;
    /// How well the last text and audio fit.
    virtual void GetSummary(match_summary* out) = 0;
    /// The number by which a calibration names its model; 0 for null.
    virtual uint64_t GetFingerprint(const CAccousticHMM* model) = 0;
};

} // namespace tessarin

/// Makes an aligner in `*out`, freed by DestroyMatchAligner. Returns 0, or 1 with `*out` null.
TESSARIN_API int32_t CreateMatchAligner(tessarin::IMatchAligner** out);

/// Frees an aligner; null is allowed.
TESSARIN_API void DestroyMatchAligner(tessarin::IMatchAligner* aligner);
