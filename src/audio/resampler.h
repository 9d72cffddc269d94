#pragma once

#include <cstdint>
#include <memory>

#include "tessarin/error_codes.h"

namespace tessarin {

/// Polyphase rate converter with a windowed-sinc low-pass. Equal rates are a plain copy; whole
/// ratios take a decimator or an interpolator, all others the rational converter, which gives each
/// output the filter phase nearest below its place between two input samples.
class CResampler {
public:
    CResampler() = default;
    CResampler(const CResampler&) = delete;
    CResampler& operator=(const CResampler&) = delete;
    virtual ~CResampler() = default;

    /// Zeroes the delay line and returns 0. Kept: the position counters run on, so a rational
    /// conversion that is restarted goes on from the filter phase where it stood.
    virtual error_code Reset();

    /// Designs the filter for two rates in Hz and clears the positions. When the rate falls,
    /// `cutoff` below 1 is where the stop band begins, as a fraction of the output's band, and the
    /// filter is longer the nearer it is to 1. Returns 0; 2 for a rate below 1 or a cutoff that is
    /// not below 1; 1 without memory. After a failure nothing is converted.
    error_code Instantiate(int32_t inputRate, int32_t outputRate, float cutoff);

    /// Converts `numIn` samples and returns how many were written to `out`: at most `maxOut`, but
    /// the interpolator always writes `GetInterpolation() * numIn`, for which there must be room.
    /// All input is taken while there is room for the output.
    uint32_t Process(float* out, const float* in, uint32_t numIn, uint32_t maxOut);

    /// How many output samples `n` input samples make, and the reverse, rounded down in single
    /// precision.
    uint32_t GetOutputCount(uint32_t n) const;
    int32_t GetInputCount(int32_t n) const;

    int32_t GetDecimation() const { return decimation; }
    int32_t GetInterpolation() const { return interpolation; }
    int32_t GetTapsPerPhase() const { return tapsPerPhase; }

private:
    void ReduceRates();
    error_code AllocateFilter();
    uint32_t Interpolate(float* out, uint32_t numIn);
    uint32_t Decimate(float* out, uint32_t begin, uint32_t numIn, uint32_t maxOut);
    uint32_t Convert(float* out, uint32_t numIn, uint32_t maxOut, uint32_t* taken);
    int32_t LocateOutput();
    const float* Phase(int32_t phase) const;

    int32_t decimation = 1;
    int32_t interpolation = 1;
    int32_t inRate = 0;
    int32_t outRate = 0;
    int32_t numPhases = 0;
    int32_t filterLength = 0;
    int32_t tapsPerPhase = 0;
    double timeSeconds = 0.0;   ///< of the output sample in hand
    double inputTime = 0.0;     ///< of the input sample chosen for it
    uint64_t outputIndex = 0;   ///< of the next output sample; a live stream may run for days
    uint64_t inputWanted = 0;   ///< input samples that the output in hand needs
    uint64_t inputConsumed = 0; ///< input samples in the delay line so far
    float outPerIn = 0.0f;
    float inPerOut = 0.0f;
    std::unique_ptr<float[]> delayLine;    ///< the last inputs, and room for a block after them
    std::unique_ptr<float[]> coefficients; ///< phase after phase
};

} // namespace tessarin
