#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tessarin {

inline constexpr int32_t kLoudnessStepMs = 10;
inline constexpr float kSilenceDb = -100.0f; ///< and anything below

/// How many steps `count` samples are; one that has only begun counts.
size_t CountLoudnessSteps(size_t count, uint32_t rateHz);

/// The loudness of samples, of which there are some: their mean square about their mean, in dB of
/// full scale, from -100 to 0, in tenths, which texts hold without loss.
float MeasureLoudnessOf(std::span<const int16_t> samples);

/// The loudness of each step of 10 ms. Blocks that begin at whole seconds may be measured one by
/// one.
std::vector<float> MeasureLoudness(std::span<const int16_t> samples, uint32_t rateHz);

/// Loudness over time, the first step of which begins at `begin`; elsewhere there is silence.
class LoudnessCurve {
public:
    explicit LoudnessCurve(std::span<const float> stepsDb, int64_t begin = 0);

    bool IsEmpty() const { return powerBefore.size() == 1; }
    /// The mean power of a stretch, in dB; of the step that holds it when it is shorter.
    float Mean(int64_t startMs, int64_t endMs) const;
    /// The loudness at a time, over as much as the ear takes for one moment.
    float At(int64_t ms) const;

private:
    int64_t beginMs;
    std::vector<double> powerBefore; ///< the power of all steps before each, and of all steps
};

} // namespace tessarin
