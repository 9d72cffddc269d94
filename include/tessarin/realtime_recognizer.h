#pragma once

#include <cstdint>

#include "tessarin/acoustic_model.h"
#include "tessarin/error_codes.h"
#include "tessarin/export.h"
#include "tessarin/sync_results.h"

namespace tessarin {

/// Hears phonemes in audio while it arrives. One thread pushes bytes; a thread of the recognizer's
/// own searches; any thread asks for what was heard. The search has no end: it goes on until Stop.
/// All operations may be called from any thread but the destruction, which comes last. None of them
/// waits for the search, except that Start and Stop wait for the thread to begin and to end.
class IRealtimePhnRecognizer {
public:
    /// Stops first.
    virtual ~IRealtimePhnRecognizer() = default;

    /// Begins to listen, again when it did already: what was pushed and not asked for is gone, no
    /// overlap reaches back beyond this moment, and times count from here. Returns 0, 14 after an
    /// initialisation that failed, or 1 when a thread cannot be started.
    virtual error_code Start() = 0;
    /// Ends listening. What was heard and not asked for is gone.
    virtual void Stop() = 0;
    /// Takes `count` bytes of interleaved samples in the format that the recognizer was made for;
    /// a block may end within a sample. Copies them, and never waits for the search. While nothing
    /// listens they are ignored, with 0. Returns 0, 1 without memory or when 4 GiB wait, 3 for a
    /// count of 2 GiB or more.
    virtual error_code WriteBytes(const void* bytes, uint32_t count) = 0;
    /// Replaces `results` by the phonemes heard since the last flush and up to `end_ms`,
    /// milliseconds since Start. Their times count from the first observation of this flush; with
    /// an overlap, from the beginning of the tail that precedes it. An end before what is pending
    /// takes all that is pending. Kept: so does -1, but for the very first flush, of which it takes
    /// one observation. Returns whether there were any. After 24 days `end_ms` is at its limit.
    virtual bool FlushResults(ISyncResultsCollection* results, int32_t end_ms) = 0;
    /// Has each flush begin with the last half of `ms` milliseconds of the flushes before, and
    /// reach as far beyond its end. 0, as at first, is none. Returns whether `ms` is not negative.
    virtual bool SetResultOverlap(int32_t ms) = 0;
    /// Flushes all but the last `delay_ms` milliseconds, once at least twice that is pending: the
    /// longer ago a sound was, the surer it is. Returns whether there was anything; the
    /// collection is emptied when enough was pending.
    virtual bool GetMicVisemix(ISyncResultsCollection* results, int32_t delay_ms) = 0;
    /// Non-zero while it listens.
    virtual uint32_t IsActive() = 0;
};

} // namespace tessarin

/// Makes a recognizer in `*out`, freed by DestroyRealtimePhnRecognizer, for audio of `sample_rate`
/// (4000 to 50000 Hz), `bits` (8, unsigned, or 16) and `channels`, of which the first is heard.
/// `latency` is in seconds; it holds flushes back until as much was heard, but only before Start.
/// `model` must outlive the recognizer; several may share it. Returns 0; 1 without memory; 2 for a
/// format out of range or without a model; 3 for a model of more than 256 states.
TESSARIN_API int32_t CreateRealtimePhnRecognizer(int32_t sample_rate, int32_t bits,
                                                 int32_t channels, double latency,
                                                 tessarin::CAccousticHMM* model,
                                                 tessarin::IRealtimePhnRecognizer** out);

/// Stops and frees a recognizer; null is allowed. No other thread is in it any more.
TESSARIN_API void DestroyRealtimePhnRecognizer(tessarin::IRealtimePhnRecognizer* recognizer);

/// How long the search of the last realtime run has worked, in nanoseconds. Of several at a time,
/// one of them.
TESSARIN_API int64_t GetPerfCount();
