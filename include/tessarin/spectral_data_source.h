#pragma once

#include <cstdint>

#include "tessarin/error_codes.h"
#include "tessarin/export.h"
#include "tessarin/pcm_data_source.h"
#include "tessarin/progress_sink.h"

namespace tessarin {

/// Spectra of audio for display, such as the columns of a spectrogram. Used by one thread at a
/// time.
///
/// A display spectrum has a value from 0 to 255 for each bin from 0 to n / 2, where bin k lies at k
/// / n of the sample rate: two steps a decibel, from the amplitude of a single step of 16-bit audio
/// (0) to 127.5 dB above it. It is taken through a Hamming window, by which a sine of amplitude A
/// shows as 20 log10(0.54 A) decibels.
class ISpectralDataSource {
public:
    virtual ~ISpectralDataSource() = default;

    /// How many spectra are stored. None of these operations stores one.
    virtual int32_t GetNumFrames() = 0;
    /// Their distance in time.
    virtual float GetFrameDurationMs() = 0;

    /// Replaces the `n` samples at `data` by their display spectrum, n / 2 + 1 values; those after
    /// them stay. `n` is a power of two, at least 4. `level` receives the level of the whole frame,
    /// 20 log10 of the length of its spectrum and not below 0; null is allowed. `reserved` has no
    /// effect. Returns 0; 2 for another `n` or without data, with nothing done and a level of 0; 1
    /// without memory.
    virtual error_code ComputeFrame(int16_t* data, int32_t n, bool reserved, float* level) = 0;
    /// ComputeFrame of samples as floats, which keep the 16-bit range.
    virtual error_code ComputeFrameFloat(float* data, int32_t n, bool reserved, float* level) = 0;
    /// Adds up the display spectra of a recording of one channel, from frames of `n` samples that
    /// overlap by half, into the first n / 2 of the `n` values at `out`; the others are 0. `sink`
    /// may be null. Returns as ComputeFrame; 6 for a source of several channels; 5 when cancelled,
    /// with nothing but zeros.
    ///
    /// Kept: each value is multiplied by twice the number of samples of the recording, not divided
    /// by it, and wrapped to 16 bits. Only very short recordings keep the shape of their
    /// spectrum.
    virtual error_code ComputeMeanSpectrum(int32_t n, int16_t* out, IPCMDataSource* source,
                                           ProgressSink* sink) = 0;
    /// Has spectra of `count` samples, at most 2048, show 0 in each bin k that does not rise above
    /// floor[k]. The `count` values are copied. Without `enable` or `floor` there is no floor.
    virtual void SetSpectrumFloor(bool enable, const int16_t* floor, int32_t count) = 0;
    /// Frees the object.
    virtual void Destroy() = 0;
};

} // namespace tessarin

/// Makes a source of spectra in `*out`, freed by DestroySpectralDataSource. Returns 0, or
/// 1 without memory or without `out`.
TESSARIN_API int32_t CreateSpectralDataSource(tessarin::ISpectralDataSource** out);

/// Frees a source of spectra; null is allowed.
TESSARIN_API void DestroySpectralDataSource(tessarin::ISpectralDataSource* source);
