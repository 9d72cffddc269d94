#pragma once

#include <cstdint>
#include <map>
#include <set>

#include "articulation/phoneme_label.h"

namespace tessarin {

/// How strongly a phoneme shows, how early it begins to show and how long it lingers.
struct articulator_rule {
    char label[4];
    int32_t release;      ///< milliseconds after the phoneme over which it fades out
    int32_t attack;       ///< milliseconds ahead of the phoneme over which it fades in
    float strength;       ///< weight in the body; from 1 it dominates its neighbours
    int32_t early_ms;     ///< length of the opening stretch
    float early_strength; ///< weight ahead of the phoneme and in its opening stretch
    int32_t late_ms;      ///< length of the closing stretch; below 1 there is none
    float late_strength;  ///< weight in the closing stretch and after the phoneme
    float gain;           ///< added to the share of the score
    int32_t offset;       ///< milliseconds by which the phoneme is shifted
};

/// All that a rule text says.
struct articulator_rules {
    float frame_rate = 20.0f;    ///< frames a second
    int32_t largest_attack = 0;  ///< milliseconds, of all rules ever read
    int32_t largest_release = 0; ///< milliseconds, of all rules ever read
    float global_gain = 0.0f;
    int32_t global_offset = 0; ///< milliseconds
    bool no_smoothing = false;
    std::set<phoneme_label> closed; ///< phonemes that must be seen to close the mouth
    std::map<phoneme_label, articulator_rule> rules;

    /// The phoneme's rule, or null: such a phoneme contributes nothing.
    const articulator_rule* Find(phoneme_label label) const {
        const auto place = rules.find(label);
        return place == rules.end() ? nullptr : &place->second;
    }
};

/// A phoneme's weight at time `t` when it lasts from `startMs` to `endMs`.
float StrengthAt(const articulator_rule& rule, int32_t startMs, int32_t endMs, int32_t t);

/// How much of a phoneme shows at time `t`: 1 while it lasts, rising in a straight line over its
/// attack and falling over its release. Not held to 0 after the release.
float FadeAt(const articulator_rule& rule, int32_t startMs, int32_t endMs, int32_t t);

} // namespace tessarin
