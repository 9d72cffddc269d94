#include "features/cosine_transform.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace tessarin {

void CCosineTransform::Prepare(int32_t numBands, int32_t numCepstra) {
    constexpr float kPi = std::numbers::pi_v<float>;
    const float bandCount = static_cast<float>(numBands);
    cosines.clear();
    cosines.reserve(static_cast<size_t>(numBands) * static_cast<size_t>(numCepstra));
    for (int32_t i = 1; i <= numBands; ++i) {
        const float centre = static_cast<float>(i) - 0.5f;
        for (int32_t j = 0; j < numCepstra; ++j) {
            cosines.push_back(std::cos(centre * kPi * static_cast<float>(j) / bandCount));
        }
    }
}

// Band by band, so that the machine adds to several cepstra at once while each keeps the order of
// its sum.
void CCosineTransform::Apply(std::span<const float> energies, std::span<float> cepstra) const {
    std::ranges::fill(cepstra, 0.0f);
    const float* row = cosines.data();
    for (const float energy : energies) {
        for (float& cepstrum : cepstra) {
            cepstrum += *row++ * energy;
        }
    }
}

} // namespace tessarin
