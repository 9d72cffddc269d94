#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <vector>

#include "audio/resampling_filter.h"

namespace tessarin::test {

/// The rate converter as it is defined, with a delay line that moves by every sample and one sum
/// at a time: slow, and easy to compare with the definition.
class PlainResampler {
public:
    PlainResampler(int32_t inputRate, int32_t outputRate, float cutoff)
        : inRate(inputRate), outRate(outputRate) {
        const int32_t common = std::gcd(inRate, outRate);
        decimation = inRate / common;
        interpolation = outRate / common;
        float fc = 1.0f;
        size_t taps = 71;
        if (outRate < inRate) {
            const float in = static_cast<float>(inRate);
            const float out = static_cast<float>(outRate);
            fc = out * cutoff / in;
            taps = static_cast<size_t>(in * 3.1415927f / ((1.0f - cutoff) * out)) | 1;
        }
        line.assign(taps, 0.0f);
        coefficients.resize(taps * static_cast<size_t>(interpolation));
        DesignResamplingFilter(coefficients, interpolation, fc);
    }

    size_t Taps() const { return line.size(); }
    void Reset() { std::ranges::fill(line, 0.0f); }

    std::vector<float> Process(const std::vector<float>& in, size_t maxOut) {
        std::vector<float> out;
        if (decimation == 1) {
            for (const float sample : in) {
                Shift(sample);
                for (int32_t phase = 0; phase < interpolation; ++phase) {
                    out.push_back(Dot(phase));
                }
            }
        } else if (interpolation == 1) {
            for (size_t i = 0; i < in.size(); ++i) {
                Shift(in[i]);
                if (i % static_cast<size_t>(decimation) == 0) {
                    out.push_back(Dot(0));
                }
            }
        } else {
            Convert(in, maxOut, &out);
        }
        return out;
    }

private:
    void Convert(const std::vector<float>& in, size_t maxOut, std::vector<float>* out) {
        size_t taken = 0;
        for (;;) {
            const double time = outputIndex / static_cast<double>(outRate);
            uint32_t wanted = static_cast<uint32_t>(inRate * time + 0.5);
            if (static_cast<double>(wanted) / inRate > time) {
                wanted = static_cast<uint32_t>(inRate * time);
            }
            const double fraction = time - static_cast<double>(wanted) / inRate;
            for (; consumed != wanted && taken < in.size(); ++consumed) {
                Shift(in[taken++]);
            }
            if (taken >= in.size() || out->size() >= maxOut) {
                return;
            }
            out->push_back(Dot(static_cast<int32_t>(fraction * (interpolation - 1) * inRate)));
            ++outputIndex;
        }
    }

    void Shift(float sample) {
        line.insert(line.begin(), sample);
        line.pop_back();
    }

    float Dot(int32_t phase) const {
        float sum = 0.0f;
        for (size_t i = 0; i < line.size(); ++i) {
            sum += line[i] * coefficients[static_cast<size_t>(phase) * line.size() + i];
        }
        return sum;
    }

    int32_t inRate;
    int32_t outRate;
    int32_t decimation;
    int32_t interpolation;
    uint32_t outputIndex = 0;
    uint32_t consumed = 0;
    std::vector<float> line; ///< newest first
    std::vector<float> coefficients;
};

} // namespace tessarin::test
