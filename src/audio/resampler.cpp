#include "audio/resampler.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "audio/float_buffer.h"
#include "audio/resampling_filter.h"
#include "base/flog.h"
#include "base/trunc_sat.h"

namespace tessarin {

namespace {

constexpr uint32_t kBlock = 1024; ///< input samples that are converted at a time
constexpr int64_t kLongestFilter = 16000000;
constexpr int32_t kTapsWhenRising = 71;
constexpr float kPi = 3.1415927f;

/// Dot products of stretches of the delay line with filter phases. Each is summed in single
/// precision from the newest sample on, which fixes its rounding. Four are summed side by side, so
/// that the additions of one need not wait for each other.
class dot_products {
public:
    dot_products(float* out, int32_t numTaps) : next(out), taps(numTaps) {}

    /// Queues the product of `phase` with the samples that end at `newest`.
    void Add(const float* newest, const float* phase) {
        samples[pending] = newest;
        phases[pending] = phase;
        if (++pending == kLanes) {
            SumAll();
        }
    }

    /// Writes what is still queued.
    void Finish() {
        for (int32_t lane = 0; lane < pending; ++lane) {
            float sum = 0.0f;
            for (int32_t i = 0; i < taps; ++i) {
                sum += samples[lane][-i] * phases[lane][i];
            }
            *next++ = sum;
        }
        pending = 0;
    }

private:
    static constexpr int32_t kLanes = 4;

    void SumAll() {
        const auto [s0, s1, s2, s3] = samples;
        const auto [p0, p1, p2, p3] = phases;
        float sum0 = 0.0f;
        float sum1 = 0.0f;
        float sum2 = 0.0f;
        float sum3 = 0.0f;
        for (int32_t i = 0; i < taps; ++i) {
            sum0 += s0[-i] * p0[i];
            sum1 += s1[-i] * p1[i];
            sum2 += s2[-i] * p2[i];
            sum3 += s3[-i] * p3[i];
        }
        *next++ = sum0;
        *next++ = sum1;
        *next++ = sum2;
        *next++ = sum3;
        pending = 0;
    }

    float* next;
    int32_t taps;
    int32_t pending = 0;
    const float* samples[kLanes];
    const float* phases[kLanes];
};

} // namespace

error_code CResampler::Reset() {
    if (delayLine != nullptr) {
        std::fill_n(delayLine.get(), tapsPerPhase, 0.0f);
    }
    return kNoError;
}

error_code CResampler::Instantiate(int32_t inputRate, int32_t outputRate, float cutoff) {
    flog scope("CResampler::Instantiate", "%d %d", inputRate, outputRate);
    delayLine.reset();
    coefficients.reset();
    decimation = interpolation = 1;
    outPerIn = inPerOut = 0.0f;
    if (inputRate < 1 || outputRate < 1 || !std::isfinite(cutoff) || cutoff >= 1.0f) {
        return kInvalidArgument;
    }
    inRate = inputRate;
    outRate = outputRate;
    ReduceRates();
    float fc = 1.0f;
    tapsPerPhase = kTapsWhenRising;
    const float in = static_cast<float>(inRate);
    const float out = static_cast<float>(outRate);
    if (outRate < inRate) {
        fc = out * cutoff / in;
        tapsPerPhase = TruncSat<int32_t>(in * kPi / ((1.0f - cutoff) * out)) | 1;
    }
    numPhases = interpolation;
    if (const error_code code = AllocateFilter()) {
        decimation = interpolation = 1;
        return code;
    }
    DesignResamplingFilter({coefficients.get(), static_cast<size_t>(filterLength)}, numPhases, fc);
    outPerIn = out / in;
    inPerOut = in / out;
    timeSeconds = inputTime = 0.0;
    outputIndex = inputWanted = inputConsumed = 0;
    return kNoError;
}

void CResampler::ReduceRates() {
    const int32_t common = std::gcd(inRate, outRate);
    decimation = inRate / common;
    interpolation = outRate / common;
}

error_code CResampler::AllocateFilter() {
    const int64_t length = int64_t{numPhases} * tapsPerPhase;
    if (length > kLongestFilter) {
        return kOutOfMemory;
    }
    filterLength = static_cast<int32_t>(length);
    delayLine = NewFloats(static_cast<uint64_t>(tapsPerPhase) + kBlock);
    coefficients = NewFloats(static_cast<uint64_t>(filterLength));
    if (delayLine == nullptr || coefficients == nullptr) {
        coefficients.reset();
        return kOutOfMemory;
    }
    return Reset();
}

uint32_t CResampler::GetOutputCount(uint32_t n) const {
    return TruncSat<uint32_t>(std::floor(static_cast<float>(n) * outPerIn));
}

int32_t CResampler::GetInputCount(int32_t n) const {
    return TruncSat<int32_t>(std::floor(static_cast<float>(n) * inPerOut));
}

// The delay line holds the last `tapsPerPhase` inputs in time order. A block is appended after
// them, so that whatever input an output needs, its samples lie side by side; then the last inputs
// that were taken move to the front.
uint32_t CResampler::Process(float* out, const float* in, uint32_t numIn, uint32_t maxOut) {
    if (coefficients == nullptr) {
        return 0;
    }
    if (decimation == interpolation) {
        const uint32_t count = std::min(numIn, maxOut);
        std::copy_n(in, count, out);
        return count;
    }
    float* const block = delayLine.get() + tapsPerPhase;
    uint32_t written = 0;
    for (uint32_t begin = 0; begin < numIn;) {
        const uint32_t count = std::min(numIn - begin, kBlock);
        std::copy_n(in + begin, count, block);
        uint32_t taken = count;
        if (decimation == 1) {
            written += Interpolate(out + written, count);
        } else if (interpolation == 1) {
            written += Decimate(out + written, begin, count, maxOut - written);
        } else {
            written += Convert(out + written, count, maxOut - written, &taken);
        }
        std::shift_left(delayLine.get(), block + taken, static_cast<ptrdiff_t>(taken));
        begin += taken;
        if (taken < count) {
            break; // no room for more output
        }
    }
    return written;
}

uint32_t CResampler::Interpolate(float* out, uint32_t numIn) {
    const float* const block = delayLine.get() + tapsPerPhase;
    dot_products products(out, tapsPerPhase);
    for (uint32_t i = 0; i < numIn; ++i) {
        for (int32_t phase = 0; phase < numPhases; ++phase) {
            products.Add(block + i, Phase(phase));
        }
    }
    products.Finish();
    return numIn * static_cast<uint32_t>(numPhases);
}

// Kept: the first sample of every call makes an output, wherever the call before it ended; streams
// ask for whole multiples of the ratio, and stored results depend on it where they do not.
uint32_t CResampler::Decimate(float* out, uint32_t begin, uint32_t numIn, uint32_t maxOut) {
    const float* const block = delayLine.get() + tapsPerPhase;
    const uint32_t step = static_cast<uint32_t>(decimation);
    const uint32_t sinceOutput = begin % step;
    dot_products products(out, tapsPerPhase);
    uint32_t written = 0;
    for (uint32_t i = sinceOutput == 0 ? 0 : step - sinceOutput; i < numIn && written < maxOut;
         i += step) {
        products.Add(block + i, Phase(0));
        ++written;
    }
    products.Finish();
    return written;
}

uint32_t CResampler::Convert(float* out, uint32_t numIn, uint32_t maxOut, uint32_t* taken) {
    const float* const newest = delayLine.get() + tapsPerPhase - 1;
    dot_products products(out, tapsPerPhase);
    uint32_t written = 0;
    *taken = 0;
    for (;;) {
        const int32_t phase = LocateOutput();
        const auto step =
            static_cast<uint32_t>(std::min<uint64_t>(inputWanted - inputConsumed, numIn - *taken));
        inputConsumed += step;
        *taken += step;
        if (*taken >= numIn || written >= maxOut) {
            break; // the output in hand is made by the next call
        }
        products.Add(newest + *taken, Phase(phase));
        ++outputIndex;
        ++written;
    }
    products.Finish();
    return written;
}

/// Chooses the last input sample that is not later than the output in hand, and returns the filter
/// phase for what lies between them.
int32_t CResampler::LocateOutput() {
    timeSeconds = static_cast<double>(outputIndex) / static_cast<double>(outRate);
    double wanted = std::trunc(inRate * timeSeconds + 0.5);
    inputTime = wanted / inRate;
    if (inputTime > timeSeconds) {
        wanted = std::trunc(inRate * timeSeconds);
        inputTime = wanted / inRate;
    }
    inputWanted = static_cast<uint64_t>(wanted);
    return static_cast<int32_t>((timeSeconds - inputTime) * (numPhases - 1) * inRate);
}

const float* CResampler::Phase(int32_t phase) const {
    return coefficients.get() + static_cast<ptrdiff_t>(phase) * tapsPerPhase;
}

} // namespace tessarin
