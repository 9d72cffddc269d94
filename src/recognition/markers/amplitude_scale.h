#pragma once

#include <cstdint>
#include <span>

namespace tessarin {

/// Maps energies of observations to percents of the range that the stream has seen.
class amplitude_scale {
public:
    /// `observationEnergies` is a loan.
    amplitude_scale(float lowest, float highest, std::span<const float> observationEnergies);

    /// Of the observations from `first` up to `end`: 0 to 100.
    float Amplitude(int32_t first, int32_t end) const;

private:
    double RootMeanSquare(int32_t first, int32_t end) const;

    std::span<const float> energies;
    float low;
    float scale;
};

} // namespace tessarin
