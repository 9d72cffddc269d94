#include "features/hamming_window.h"

#include <cmath>
#include <cstddef>
#include <numbers>

namespace tessarin {

void HammingWindow(std::span<float> window) {
    constexpr float kTwoPi = 2.0f * std::numbers::pi_v<float>;
    const float last = static_cast<float>(window.size() - 1);
    for (size_t i = 0; i < window.size(); ++i) {
        window[i] = 0.54347825f - 0.45652175f * std::cos(static_cast<float>(i) * kTwoPi / last);
    }
}

} // namespace tessarin
