#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <vector>

namespace tessarin::test {

/// `count` samples of a sine.
inline std::vector<float> Sine(size_t count, double frequencyHz, double sampleRateHz,
                               double amplitude) {
    std::vector<float> samples(count);
    for (size_t i = 0; i < count; ++i) {
        const double phase =
            2 * std::numbers::pi * frequencyHz * static_cast<double>(i) / sampleRateHz;
        samples[i] = static_cast<float>(amplitude * std::sin(phase));
    }
    return samples;
}

/// The same pseudo-random numbers for a seed on every machine, which the standard distributions
/// do not promise.
class Noise {
public:
    explicit Noise(uint32_t seed) : state(seed) {}

    uint32_t NextU32() {
        state = state * 6364136223846793005u + 1442695040888963407u;
        return static_cast<uint32_t>(state >> 32);
    }
    /// Even between `low` and `high`.
    float Next(float low, float high) {
        const float unit = static_cast<float>(NextU32() >> 8) / 16777216.0f;
        return low + (high - low) * unit;
    }

private:
    uint64_t state;
};

/// `count` samples of white noise between `-amplitude` and `amplitude`.
inline std::vector<float> WhiteNoise(size_t count, float amplitude, uint32_t seed) {
    Noise noise(seed);
    std::vector<float> samples(count);
    for (float& sample : samples) {
        sample = noise.Next(-amplitude, amplitude);
    }
    return samples;
}

} // namespace tessarin::test
