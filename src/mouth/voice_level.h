#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "mouth/loudness.h"
#include "tessarin/tessarin_c.h"

namespace tessarin {

/// How far a vowel opens the mouth that is so many dB louder than the voice usually is, 0 to 1.
float OpeningOf(float relativeDb);

/// The level by which a consonant is articulated in a phrase that is so many dB louder than the
/// voice usually is, 0 to 1.
float ConsonantLevelOf(float phraseDb);

/// How loud each phoneme is against the voice that says it. A recording's own vowels say what is
/// usual, so its level does not matter; a shout and a whisper show all the same.
class VoiceLevels {
public:
    /// Without a curve the scores of the phonemes say how loud they are.
    VoiceLevels(std::span<const tessarin_phoneme> phonemes, const LoudnessCurve& loudness);

    /// The level of a phoneme by which it is articulated, 0 to 1.
    const std::vector<float>& GetLevels() const { return levels; }
    /// The loudness of a usual vowel, in dB.
    float GetUsualDb() const { return usualDb; }

private:
    float usualDb = 0.0f;
    std::vector<float> levels;
};

} // namespace tessarin
