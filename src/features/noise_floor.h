#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tessarin {

/// Noise in log band energies: a floor that the host installs, or that the first frames teach, is
/// subtracted from every frame after.
class CNoiseFloor {
public:
    /// Subtracts the floor from `energies`, which become no less than 0. While no floor is
    /// installed the first ten frames pass as they are and are learned from.
    void Reduce(std::span<float> energies);

    void Install(std::span<const float> energies);

    /// Ends learning; floors that are there stay in force.
    void StopLearning();

    /// Drops all floors; the next can be learned or installed.
    void Clear();

private:
    uint32_t noiseFrames = 0;
    bool learningNoise = false;
    std::vector<std::vector<float>> noiseFloors; // the first one is in force
};

} // namespace tessarin
