#pragma once

#include <cstddef>
#include <cstdint>

#include "tessarin/error_codes.h"
#include "tessarin/export.h"
#include "tessarin/sync_results.h"

namespace tessarin {

/// A phoneme and its share of the mouth shape.
struct articulation_entry {
    char label[4]; ///< phoneme label, zero-terminated
    float weight;  ///< 0 to 1
};

/// One video frame: up to 10 phonemes whose weights sum to 1, largest first. Published layout.
struct articulation {
    int32_t count;                  ///< entries in use
    articulation_entry entries[10]; ///< the heaviest first
    int32_t start;                  ///< milliseconds
    int32_t end;                    ///< milliseconds
};
static_assert(sizeof(articulation) == 92 && offsetof(articulation, start) == 84);

/// A stretch of an envelope: the phoneme has weight `value` from `t0` to `t1`; the curve's key is
/// at `t1`. Milliseconds. Published layout.
struct envelope_point {
    int32_t t0;  ///< milliseconds
    int32_t t1;  ///< milliseconds
    float value; ///< weight, 0 to 1
};
static_assert(sizeof(envelope_point) == 12);

/// The weight curve of one occurrence of a phoneme. Published layout.
struct articulation_envelope {
    char label[4];          ///< phoneme label, zero-terminated
    int32_t start;          ///< milliseconds
    int32_t end;            ///< milliseconds
    int32_t count;          ///< points
    envelope_point* points; ///< owned by the articulator
};
static_assert(sizeof(void*) != 8 || (sizeof(articulation_envelope) == 24 &&
                                     offsetof(articulation_envelope, points) == 16));

/// Flags of an articulator.
enum articulator_flags : uint32_t {
    kSmoothFrames = 1,   ///< guarantee closures and limit slopes
    kCommonKeyTimes = 2, ///< envelopes get common key times
    kExcessLevel = 4,    ///< the part of a phoneme's level above 1 counts
};

/// Turns timed phonemes into frames of mouth-shape weights. Used by one thread at a time.
class IPhnMixtureArticulator {
public:
    virtual ~IPhnMixtureArticulator() = default;

    /// Loads a rule text of `length` bytes; a null text or a length of 0 loads the default rules.
    /// Returns 0; 2 for a negative length; 12 for a malformed text; 21 for a later version. Rules
    /// read before a failure stay.
    virtual error_code LoadArticulatorRules(const char* text, int32_t length) = 0;
    /// Frames a second; above 0 it overrides the rate of the rules.
    virtual void SetFrameRate(float rate) = 0;
    /// The largest change between neighbouring envelope points; 0.25 at first.
    virtual void SetEnvelopeSlope(float slope) = 0;
    /// The most phonemes in a frame, 1 to 10. Returns 3 for another count, which changes nothing.
    virtual error_code SetMaxContributions(int32_t count) = 0;
    /// Makes the frames of `results` from `startMs` to `endMs`; -1 for either means all of it.
    /// `reserved` is not used. Returns an error code: 3 for a frame rate that gives no frames, or
    /// for more than 2,592,000 frames, which is a day at 30 frames a second.
    virtual error_code GenerateArticulations2(ISyncResultsCollection* results, void* reserved,
                                              int32_t startMs, int32_t endMs) = 0;
    /// GenerateArticulations2 over all of the results.
    virtual error_code GenerateArticulations(ISyncResultsCollection* results, void* reserved) = 0;
    /// The first frame, or null when there are none; valid until the next operation that changes
    /// the frames.
    virtual articulation* GetArticulationsBegin() = 0;
    /// The place after the last frame, or null when there are none.
    virtual articulation* GetArticulationsEnd() = 0;
    /// Appends a frame, first emptying the list if asked.
    virtual void AddArticulation(const articulation& frame, bool clearFirst) = 0;
    /// Frees the object.
    virtual void DestroySelf() = 0;
    /// Replaces the articulator_flags. Returns 0.
    virtual error_code SetFlags(uint32_t flags) = 0;
    /// Builds one curve for each occurrence of a phoneme from the frames. Returns an error code.
    virtual error_code GenerateEnvelopes() = 0;
    /// The first curve, or null when there are none; valid until the next GenerateEnvelopes.
    virtual articulation_envelope* GetEnvelopesBegin() = 0;
    /// The place after the last curve, or null when there are none.
    virtual articulation_envelope* GetEnvelopesEnd() = 0;
    /// Collapses the frames from `startMs` to `endMs` (-1: the first, the last) into the mixture of
    /// at most `maxCount` phonemes that stands for them best; below 1 means the maximum
    /// contributions. The result lives in the articulator; null when the stretch is empty.
    virtual articulation* Quanitze(int32_t startMs, int32_t endMs, int32_t maxCount) = 0;
    /// The articulator_flags.
    virtual uint32_t GetFlags() = 0;
    /// Sets the gain of each phoneme of the string, or the global gain when it is null or empty. A
    /// phoneme without a rule gets one that shows nothing, so load the rules first: the default
    /// rules are loaded by themselves only while there is no rule at all.
    virtual void SetGain(const char* phonemes, float gain) = 0;
};

} // namespace tessarin

/// Makes an articulator in `*out`. `options` has no effect. Returns 0, or 1 with `*out` null.
/// Freed by DestroyPhonemeArticulator.
TESSARIN_API int32_t CreatePhonemeArticulator(tessarin::IPhnMixtureArticulator** out,
                                              uint32_t options);

/// Frees an articulator; null is allowed.
TESSARIN_API void DestroyPhonemeArticulator(tessarin::IPhnMixtureArticulator* articulator);
