#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "articulation/articulator_rule.h"
#include "articulation/phoneme_mixture.h"

namespace tessarin {

/// A phoneme that is heard from `start` to `end`, with its rule or null.
struct sounding_phoneme {
    int32_t start; ///< milliseconds
    int32_t end;   ///< milliseconds
    float score;   ///< 0 to 100
    phoneme_label label;
    const articulator_rule* rule;
};

/// What stays the same over the frames of a run.
struct mixture_settings {
    float global_gain = 0.0f;
    size_t max_contributions = 10;
    bool smooth = false;       ///< a dominant phoneme silences only the side that is farther away
    bool count_excess = false; ///< the part of a level above 1 counts
};

/// The phonemes around an instant, those on either side in time order.
struct neighbourhood {
    const sounding_phoneme* current = nullptr; ///< the one that is heard, if any
    std::vector<const sounding_phoneme*> before;
    std::vector<const sounding_phoneme*> after;
};

/// The mouth shape at time `t`: what is heard, mixed with what still lingers and what is already
/// being prepared. `previous` is the mixture of the frame before, whose phonemes are dropped last
/// when there are too many.
void MixtureAt(int32_t t, const neighbourhood& around, const mixture_settings& settings,
               const phoneme_mixture& previous, phoneme_mixture& mixture);

} // namespace tessarin
