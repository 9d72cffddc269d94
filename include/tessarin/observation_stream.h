#pragma once

#include <cstdint>

#include "tessarin/error_codes.h"
#include "tessarin/export.h"
#include "tessarin/pcm_stream.h"

namespace tessarin {

class CAccousticHMM;

/// Feature vectors, one for each analysis window, in time order. Read by one thread at a time. A
/// stream serves one recognition: make a new one for the next run over the same audio.
class IObservationStream {
public:
    virtual ~IObservationStream() = default;

    /// How many observations the stream gives.
    virtual uint32_t GetNumObservations() = 0;
    /// Reads the next vector. The caller owns `features`, with room for the model's feature count,
    /// and receives the window's energy in `energy`. Returns an error code.
    virtual error_code GetObservation(float* features, float* energy) = 0;
    /// The analysis window and the overlap of neighbouring windows, in samples. Either may be null.
    virtual void GetFrameGeometry(uint32_t* windowSize, uint32_t* overlap) = 0;
    /// The analysis sample rate in Hz.
    virtual float GetSampleRate() = 0;
    /// The lowest and highest window energy seen so far. Either may be null.
    virtual void GetEnergyRange(float* minimum, float* maximum) = 0;
    /// Replaces the run-time flags: 2 reports energies in decibels, 4 subtracts a noise floor from
    /// the band energies.
    virtual void SetProcessingFlags(uint32_t flags) = 0;
    /// Reads the next window and writes its band energies (log10 of the mean power in each band)
    /// to `out`, which has room for the model's bands; `*count` receives their number. Returns an
    /// error code.
    virtual error_code GetBandEnergies(float* out, uint32_t* count) = 0;
    /// Installs a fixed noise floor of `count` band energies. `kind` is 1; other kinds answer 6, a
    /// count other than the number of bands 3.
    virtual error_code SetNoiseFloor(uint32_t kind, const float* bands, int32_t count) = 0;
};

} // namespace tessarin

/// Opens the audio file `path` for the features that `model` expects; channel 1 is analysed. On
/// success `*out` is the caller's, freed by DestroyObservationStream; on failure it is null and the
/// code says why. `model` must outlive the stream.
TESSARIN_API int32_t CreateObservationStreamFromAudioFile(const char* path,
                                                          tessarin::CAccousticHMM* model,
                                                          tessarin::IObservationStream** out);

/// As CreateObservationStreamFromAudioFile, from audio that the host delivers. `stream` stays the
/// host's and must outlive the observation stream.
TESSARIN_API int32_t CreateObservationStreamFromQuibStream(tessarin::IQuibPCMStream* stream,
                                                           tessarin::CAccousticHMM* model,
                                                           tessarin::IObservationStream** out);

/// Frees an observation stream; null is allowed.
TESSARIN_API void DestroyObservationStream(tessarin::IObservationStream* stream);

/// The energy of the first difference of `count` samples (range of 16-bit audio) in decibels above
/// a mean square of 1, plus 0.5; never below 0. `*previous` is the sample before the first one and
/// receives the last one.
TESSARIN_API float CalcDecibalPower(const float* samples, float* previous, int32_t count);

/// Silences what is between the words before `stream`, one of the streams above, is analysed. The
/// whole audio is read at the first observation, so this serves recordings only. Call it before
/// that. `thresholdDb` below 0 is the level, in decibels of full scale, below which a stretch is
/// quiet; otherwise the quietest share `percentile` (0 to 1; 0 means 0.28) of the audio sets it.
/// Stretches fade out and in within `rampMs`. Gaps of less than 125 ms stay; louder sounds shorter
/// than `maxBlipMs` (0 means 150), with quiet of at least `minQuietMs` (0 means 220) before and
/// after, go too. Returns 0; 1 without memory; 2 for a chain of several channels; 6 for null and
/// for a stream that has no place for a gate.
TESSARIN_API int32_t AddNoiseGate(tessarin::IObservationStream* stream, float thresholdDb,
                                  float percentile, int32_t rampMs, int32_t minQuietMs,
                                  int32_t maxBlipMs);
