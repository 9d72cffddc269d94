#pragma once

#include <span>
#include <string_view>

#include "tessarin/error_codes.h"
#include "tessarin/tessarin_c.h"

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

/// Multiplies what a host asks for, in its order, to 4 at most. Returns 0, 3 for a factor that is
/// not 0 to 4, or 2 for what is not a part of the mouth.
error_code ReadStrength(std::span<const tessarin_strength> wanted, mouth_strength& out);

} // namespace tessarin
