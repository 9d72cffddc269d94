#include "mouth/mouth_classes.h"

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
    for (const auto& [parts, factor] : wanted) {
        if (!(factor >= 0.0f && factor <= kMaxStrength)) {
            return kOutOfRange;
        }
        if (parts == 0 || (parts & ~kAllParts) != 0) {
            return kInvalidArgument;
        }
        out.vowels *= (parts & TESSARIN_VOWELS) != 0 ? factor : 1.0f;
        out.consonants *= (parts & TESSARIN_CONSONANTS) != 0 ? factor : 1.0f;
        out.lips *= (parts & TESSARIN_LIPS) != 0 ? factor : 1.0f;
        out.teeth *= (parts & TESSARIN_TEETH) != 0 ? factor : 1.0f;
    }
    return kNoError;
}

} // namespace tessarin
