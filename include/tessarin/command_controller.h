#pragma once

#include <cstdint>

#include "tessarin/error_codes.h"
#include "tessarin/export.h"
#include "tessarin/observation_stream.h"
#include "tessarin/progress_sink.h"
#include "tessarin/transcriber.h"

namespace tessarin {

class CAccousticHMM;

/// Tells which one of a few known phrases an utterance is. Each phrase is a sequence of phonemes;
/// the one along which the utterance scores best wins, however poorly: there is no threshold, and
/// the host judges the score. Commands are named by numbers above 0. Used by one thread.
class IQuibCmdCtrl {
public:
    /// Takes a reference and returns how many there are. A new controller has none, so the host
    /// begins with this.
    virtual int32_t AddRef() = 0;
    /// Gives a reference back and returns how many are left. The last one, or a call without any,
    /// deletes the controller and returns 0.
    virtual int32_t Release() = 0;
    /// Adds a command of what `transcriber` makes of `text`. Returns its id; 0 without text or
    /// transcriber, when nothing came of the text, or without memory. Ids go on from the largest
    /// that there is, so that of a deleted command can come back.
    virtual uint32_t AddCommandFromTranscriber(const char* text,
                                               IVisemixTranscriber* transcriber) = 0;
    /// Adds a command of a phoneme string; white space and commas are skipped. Returns its id, or 0
    /// when a symbol is not in the phoneme alphabet.
    virtual uint32_t AddCommandFromPhonemes(const char* phonemes) = 0;
    /// Adds a command of a transcriber's tokens from `first` up to `last`, into which places in the
    /// search graph are written. Returns its id; 0 for null pointers, for `last` before `first`,
    /// without memory, or for a model of more than 256 phonemes or of more than 256 states each.
    virtual uint32_t AddCommandFromMarkers(CTxMarker* first, CTxMarker* last) = 0;
    /// Deletes a command; without one of this id nothing happens.
    virtual void DeleteCommand(uint32_t id) = 0;
    /// Leaves a command out of the search; it keeps its id.
    virtual void DisableCommand(uint32_t id) = 0;
    /// Takes a command back into the search.
    virtual void EnableCommand(uint32_t id) = 0;
    /// Which enabled command the utterance in `stream` is, a fresh stream for the controller's
    /// model. Returns its id; of commands with the same score the earliest. Returns 0 when all are
    /// disabled or were not found, or fewer than 3 observations are above the energy floor, or a
    /// read failed. `progress` may be null; asked to stop, it ends the search of one command after
    /// the other. `score` may be null; it receives the natural logarithm of the best path's
    /// likelihood and length, -1e10 where there is none; short of 3 observations it stays as it is.
    /// For each command that was found, "mdl ", its id, a blank and its score go to standard
    /// output.
    virtual uint32_t RecognizeCommand(IObservationStream* stream, ProgressSink* progress,
                                      double* score) = 0;

protected:
    ~IQuibCmdCtrl() = default;
};

} // namespace tessarin

/// Makes a controller in `*out`, without a reference. `reserved` is not read. Observations whose
/// energy is not above `energyFloor` are left out of an utterance; 0 or less keeps all. The floor
/// is compared with what the stream gives: decibels after SetProcessingFlags(2), else the root of
/// the spectrum's power. `model` must outlive the controller. Returns 0; 2 without a model; or,
/// without memory or without `out`, 1, with `*out` null.
TESSARIN_API int32_t CreateQuibCmdCtrl(void* reserved, tessarin::CAccousticHMM* model,
                                       float energyFloor, tessarin::IQuibCmdCtrl** out);
