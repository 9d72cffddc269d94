#include "mouth/mouth_classes.h"

#include "model/phoneme_alphabet.h"

namespace tessarin {

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

} // namespace tessarin
