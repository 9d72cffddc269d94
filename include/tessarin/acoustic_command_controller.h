#pragma once

#include <cstdint>

#include "tessarin/error_codes.h"
#include "tessarin/export.h"
#include "tessarin/observation_stream.h"
#include "tessarin/pcm_stream.h"

namespace tessarin {

class CAccousticHMM;

/// Tells which one of a few recorded samples an utterance is most like, by time warping over their
/// observations. Knows no phonemes, so a command may be in any language, or no speech at all; but
/// it knows the voice of the sample better than others. Commands are named by numbers above 0. Used
/// by one thread.
class IQuibAcousticCmdCtrl {
public:
    /// Takes a reference and returns how many there are. A new controller has none, so the host
    /// begins with this.
    virtual int32_t AddRef() = 0;
    /// Gives a reference back and returns how many are left. The last one, or a call without any,
    /// deletes the controller and returns 0.
    virtual int32_t Release() = 0;
    /// Adds a command by a sample of it, all of `stream`, a fresh stream for the controller's
    /// model. Observations whose energy is not above the energy floor are kept, but are not
    /// compared. Returns its id, or 0 without `stream` or memory or when a read failed. Ids go on
    /// from the largest that there is, so that of a deleted command can come back.
    virtual uint32_t AddCommandFromStream(IObservationStream* stream) = 0;
    /// The data of a command, for AddCommandFromData: five 32-bit counts (version, id, observations
    /// of the sample, features of an observation, values of an observation) and the values, 32-bit
    /// floats, all little-endian. Returns their size in bytes, and writes them to `buffer` unless
    /// it is null. 0 for an unknown id, or for a sample of more than 4 GB.
    virtual uint32_t GetCommandData(uint32_t id, void* buffer) = 0;
    /// Adds a command from the data of one, all of which must be there: the size follows from the
    /// counts, 20 + observations * values * 4. Returns its id, which is not the stored one; 0 for
    /// null, another version, counts that cannot be (1 to 64 features and two values more, at most
    /// a million observations), values that are not finite numbers, or without memory.
    virtual uint32_t AddCommandFromData(const void* data) = 0;
    /// Deletes a command; without one of this id nothing happens.
    virtual void DeleteCommand(uint32_t id) = 0;
    /// Marks a command as disabled. It is compared all the same: a host that wants it left out
    /// deletes it, or ignores its id.
    virtual void DisableCommand(uint32_t id) = 0;
    /// Takes the mark back.
    virtual void EnableCommand(uint32_t id) = 0;
    /// Begins a live utterance of audio in the format `format`; what was heard of the last one is
    /// forgotten. Audio at another rate than that of the utterance before is brought to 16000 Hz,
    /// so it is best to feed the model's rate. Returns 0; 2 without `format` or for one that cannot
    /// be; or 1 without memory.
    virtual error_code BeginUtterance(const PCMFormat* format) = 0;
    /// Takes in `size` bytes of the utterance and analyses what it can. Returns 0; 3 when the
    /// utterance has ended, now (the last 300 ms are 15 dB below all before, or at the energy
    /// floor) or before; 2 without `data`; 1 without memory; or the code of a failed read.
    virtual error_code ProcessAudio(const void* data, uint32_t size) = 0;
    /// Which command the whole utterance in `stream` is most like, a fresh stream for the
    /// controller's model. Returns its id; of equals the earliest. Returns 0 when there is nothing
    /// to compare, when fewer than 3 observations are above the energy floor, or when a read
    /// failed. `reserved` is not read. `distance` may be null; it receives the distance in units of
    /// the mean distance of two observations, for each step of the warp: 0 is the same recording,
    /// the largest float none at all. Short of 3 observations it stays as it is. The three features
    /// of the energy are not compared. There is no threshold: the host judges the distance.
    virtual uint32_t RecognizeStream(IObservationStream* stream, void* reserved,
                                     float* distance) = 0;
    /// Which command the live utterance is most like as far as it was heard; can be asked at any
    /// time, and takes a row of the comparison for each new observation only. `finished`: no more
    /// audio will come. Otherwise as RecognizeStream, but that all features are compared. For each
    /// command "mdl ", its id, a blank, its distance, " frames: " and how many observations of its
    /// sample are compared go to standard output.
    virtual uint32_t RecognizeLive(bool finished, float* distance) = 0;

protected:
    ~IQuibAcousticCmdCtrl() = default;
};

} // namespace tessarin

/// Makes a controller in `*out`, without a reference. `reserved` is not read. Of `model` it copies
/// how audio is analysed; the model need not live on. `energyFloor` is in decibels: observations
/// that are not above it are not compared; for streams call SetProcessingFlags(2), without which
/// their energy is the root of the spectrum's power. 0 or less keeps all of a stream. Returns 0; 2
/// without a model; 1 with `*out` null without memory, or without `out`. Any other code says that
/// live audio cannot be analysed as the model asks: `*out` is the host's all the same.
TESSARIN_API int32_t CreateQuibAcousticCmdCtrl(void* reserved, tessarin::CAccousticHMM* model,
                                               float energyFloor,
                                               tessarin::IQuibAcousticCmdCtrl** out);
