#include "articulation/articulator_rule.h"

namespace tessarin {

float StrengthAt(const articulator_rule& rule, int32_t startMs, int32_t endMs, int32_t t) {
    if (t < int64_t{startMs} + rule.early_ms) {
        return rule.early_strength;
    }
    const bool late = rule.late_ms >= 1 && t > int64_t{endMs} - rule.late_ms;
    return late ? rule.late_strength : rule.strength;
}

float FadeAt(const articulator_rule& rule, int32_t startMs, int32_t endMs, int32_t t) {
    if (t < startMs) {
        const int64_t ahead = int64_t{startMs} - t;
        return ahead > rule.attack
                   ? 0.0f
                   : static_cast<float>(rule.attack - ahead) / static_cast<float>(rule.attack);
    }
    if (t < endMs) {
        return 1.0f;
    }
    const int64_t after = int64_t{t} - endMs;
    return rule.release == 0
               ? 0.0f
               : static_cast<float>(rule.release - after) / static_cast<float>(rule.release);
}

} // namespace tessarin
