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
    kMatchUnknown = 0, ///< no calibration was set, or no word was looked at: the text has none, the
                       ///< mode is exact, or the text cannot fit into the audio
    kMatchGood = 1,    ///< all of it was said and nothing else
    kMatchDoubtful = 2, ///< words were not said, other speech was heard, or the sounds fit badly
    kMatchPoor = 3,     ///< it is hardly the text of this recording
};

/// A word of the text. Published layout.
struct match_word {
    uint32_t text_start; ///< its first byte in the transcriber's text
    uint32_t text_end;   ///< after it
    int32_t is_said;     ///< 1 for a word that has a marker, 0 for one that was not heard
    float confidence;    ///< probability that it was said at these times, 0 to 1; -1 unknown
    float margin;        ///< how much likelier the audio is with the word than without it, as a
                         ///< natural logarithm, divided by the spread of its region: above 0 it
                         ///< speaks for the word; -1e9 for a word that was not looked at
};
static_assert(sizeof(match_word) == 20);

/// Speech that is not in the text. Published layout.
struct match_stretch {
    int32_t start_ms;    ///< where it begins, from the start of the stream
    int32_t end_ms;      ///< where it ends
    uint32_t text_start; ///< first byte of the token before which it was said, or the text's length
};
static_assert(sizeof(match_stretch) == 12);

/// How well a text and a recording fit. Published layout.
struct match_summary {
    int32_t verdict;       ///< a match_verdict
    float score;           ///< probability that the text belongs to the audio, 0 to 1; -1 unknown:
                           ///< no calibration was set, or no word was looked at
    int32_t is_loose;      ///< 1 when the times of at least one region (the audio between two cuts)
                           ///< come from the search that may leave words out, else 0
    uint32_t words;        ///< number of words in the text
    uint32_t unsaid;       ///< how many of them were not heard
    int32_t unscripted_ms; ///< length of all speech that is not in the text
    float margin;          ///< mean of the words' margins, each clamped to 0 to 100
    float fit;             ///< mean, over the observations (10 ms of audio each) that are not
                           ///< silence, of the natural logarithm of their likelihood on the text's
                           ///< path less that on the path heard without a text: 0 where the text
                           ///< fits as well as anything, -1 or lower where it does not
    float duration;        ///< mean distance of the phonemes' lengths from their usual ones, in
                    ///< standard deviations: the lower the better; -1 unknown: no calibration
                    ///< was set, or the text has no phonemes
    float spread; ///< by which factor scores vary more than for voices that the model was
                  ///< trained on: 1 for these, up to 2.2 for others; the largest of all
                  ///< regions
};
static_assert(sizeof(match_summary) == 40);

/// Aligns a text that need not be what was said, and judges each word. Takes time and memory in
/// proportion to the length of the audio. Serves one call at a time, on any thread.
class IMatchAligner {
public:
    virtual ~IMatchAligner() = default;

    /// `mode` is a match_mode; kMatchAuto at first. Returns 0, or 2 for another number, which
    /// changes nothing.
    virtual error_code SetMode(uint32_t mode) = 0;
    /// As ITextBasedPhnRecognizer::SetBeamWidth, of the exact search: 500 to 8000 states.
    virtual void SetBeamWidth(int32_t width) = 0;
    /// As the first option of ITextBasedPhnRecognizer::SetOutputOptions: 1 lets the exact search
    /// slide its window ahead where it loses the text, 0 does not.
    virtual void SetRetry(uint8_t retry) = 0;
    /// Reads what the scores of `model` mean from the `length` bytes at `text`, the content of the
    /// file that belongs to the model. Neither is kept; the model is the one that Align is called
    /// with. Returns 0; 12 for a text that is not a calibration, 2 for one of another model and for
    /// null, and 1 without memory. After a failure the aligner has no calibration.
    virtual error_code SetCalibration(CAccousticHMM* model, const char* text, uint32_t length) = 0;
    /// As ITextBasedPhnRecognizer::RecognizePhonemes, with its arguments and codes. Where the times
    /// are those of the loose search, words that were not said have no markers and other speech has
    /// the phonemes that were heard. A region whose text the exact search lost fails with 8 only
    /// when less than half of its words were heard; the code is that of the last region that
    /// failed. After any code but 0 and 8 words, stretches and confidences are empty.
    virtual error_code Align(IObservationStream* stream, CAccousticHMM* model, const char* text,
                             IVisemixTranscriber* transcriber, ProgressSink* progress,
                             ISyncResultsCollection* results) = 0;
    /// The words of the last text in its order, `*count` of them (`count` may be null). They belong
    /// to the aligner and are valid until the next call of Align. Null when there are none or the
    /// mode was exact. The words that were said have the word markers of the results, in order.
    virtual const match_word* GetWords(uint32_t* count) = 0;
    /// Speech that is not in the text, in order of time; otherwise as GetWords.
    virtual const match_stretch* GetUnscripted(uint32_t* count) = 0;
    /// One number for each phoneme marker of the results, in their order: the confidence of its
    /// word, or the share of phonemes that are heard rightly without a text; -1 for silence and
    /// where it is unknown. Otherwise as GetWords.
    virtual const float* GetPhonemeConfidences(uint32_t* count) = 0;
    /// Writes to `*out` (null is allowed) how well the last text and audio fit. Before the first
    /// alignment, after a failure and with the exact mode, all is unknown.
    virtual void GetSummary(match_summary* out) = 0;
    /// The number by which a calibration names its model: it depends on all that the model scores
    /// with. 0 for null.
    virtual uint64_t GetFingerprint(const CAccousticHMM* model) = 0;
};

} // namespace tessarin

/// Makes an aligner in `*out`, freed by DestroyMatchAligner. Returns 0, or 1 with `*out` null.
TESSARIN_API int32_t CreateMatchAligner(tessarin::IMatchAligner** out);

/// Frees an aligner; null is allowed.
TESSARIN_API void DestroyMatchAligner(tessarin::IMatchAligner* aligner);
