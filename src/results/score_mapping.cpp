#include "results/score_mapping.h"

#include <algorithm>
#include <cmath>

#include "base/trunc_sat.h"
#include "model/phoneme_alphabet.h"

namespace tessarin {

float MapScore(float raw, std::string_view label, int64_t durationMs) {
    constexpr int32_t kAudible = 5;
    constexpr float kMsPerPoint = 3.75f;
    constexpr float kOpenMouth = 65.0f;

    const int32_t whole = TruncSat<int32_t>(raw);
    const float base = raw >= 1.0f ? 50.0f * std::log10(raw) : 0.0f;
    const float mapped = 0.75f * base + 0.25f * static_cast<float>(whole);
    if (whole <= kAudible || !is_sonorant_label(label)) {
        return mapped;
    }
    const float level = 50.0f * std::log10(mapped);
    return std::max(static_cast<float>(durationMs) / kMsPerPoint + 0.5f * level, kOpenMouth);
}

} // namespace tessarin
