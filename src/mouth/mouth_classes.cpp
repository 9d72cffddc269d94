#include "mouth/mouth_classes.h"

#include <algorithm>
#include <cstdint>

#include "model/phoneme_alphabet.h"

namespace tessarin {

namespace {

constexpr float kMaxStrength = 4.0f;
constexpr uint32_t kAllParts =
    TESSARIN_VOWELS | TESSARIN_CONSONANTS | TESSARIN_LIPS | TESSARIN_TEETH;

} // namespace

mouth_class ClassOf(std::string_view label) {
    if (label == "x") {
        return mouth_class::rest;
    }
    if (label == "p" || label == "b" || label == "m") {
        return mouth_class::lips;
    }
    if (label == "f" || label == "v") {
        return mouth_class::teeth;
    }
    return is_vowel_label(label) ? mouth_class::vowel : mouth_class::consonant;
}

float mouth_strength::Of(mouth_class which) const {
    switch (which) {
    case mouth_class::lips:
        return lips;
    case mouth_class::teeth:
        return teeth;
    case mouth_class::vowel:
        return vowels;
    case mouth_class::consonant:
        return consonants;
    default:
        return 1.0f;
    }
}

error_code ReadStrength(std::span<const tessarin_strength> wanted, mouth_strength& out) {
    for (const tessarin_strength& each : wanted) {
        const uint32_t parts = each.parts;
        const float factor = each.factor;
        if (!(factor >= 0.0f && factor <= kMaxStrength)) {
            return kOutOfRange;
        }
        if (parts == 0 || (parts & ~kAllParts) != 0) {
            return kInvalidArgument;
        }
        const auto multiply = [&](uint32_t part, float& strength) {
            strength = (parts & part) != 0 ? std::min(strength * factor, kMaxStrength) : strength;
        };
        multiply(TESSARIN_VOWELS, out.vowels);
        multiply(TESSARIN_CONSONANTS, out.consonants);
        multiply(TESSARIN_LIPS, out.lips);
        multiply(TESSARIN_TEETH, out.teeth);
    }
    return kNoError;
}

} // namespace tessarin
