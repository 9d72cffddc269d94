#pragma once

#include <string_view>

namespace tessarin {

/// What part of the mouth a phoneme is made with, as far as it shows.
enum class mouth_class { rest, lips, teeth, vowel, consonant };

/// Of a label of the alphabet; anything else is a consonant.
mouth_class ClassOf(std::string_view label);

/// How far each class leaves rest: 1 is as it is spoken.
struct mouth_strength {
    float lips = 1.0f;
    float teeth = 1.0f;
    float vowels = 1.0f;
    float consonants = 1.0f;

    float Of(mouth_class which) const;
};

} // namespace tessarin
