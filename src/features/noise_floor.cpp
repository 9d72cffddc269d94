#include "features/noise_floor.h"

#include <algorithm>
#include <cstddef>

namespace tessarin {

namespace {

constexpr uint32_t kLearnedFrames = 10;

} // namespace

// Kept: each learned frame overwrites the floor of the one before, so that a tenth of the tenth
// frame is what takes effect, not a mean of ten. Decoded results depend on that level.
void CNoiseFloor::Reduce(std::span<float> energies) {
    const bool firstFrame = noiseFrames == 0 && noiseFloors.empty();
    if (firstFrame) {
        noiseFloors.emplace_back(energies.size());
        learningNoise = true;
    }
    std::vector<float>& floor = noiseFloors.front();
    if (firstFrame || (learningNoise && noiseFrames < kLearnedFrames)) {
        std::ranges::transform(energies, floor.begin(), [](float e) { return e / 10.0f; });
        ++noiseFrames;
        return;
    }
    for (size_t i = 0; i < energies.size(); ++i) {
        energies[i] = std::max(energies[i] - floor[i], 0.0f);
    }
}

void CNoiseFloor::Install(std::span<const float> energies) {
    noiseFloors.emplace_back(energies.begin(), energies.end());
}

void CNoiseFloor::StopLearning() {
    noiseFrames = 0;
    learningNoise = false;
}

void CNoiseFloor::Clear() {
    StopLearning();
    noiseFloors.clear();
}

} // namespace tessarin
