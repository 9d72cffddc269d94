#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "articulation/articulator_rule.h"
#include "articulation/markers/phn_marker_list.h"
#include "articulation/mixture_at.h"
#include "articulation/sweep_window.h"

namespace tessarin {

/// The phonemes of a run with their rules, asked for the neighbourhood of one instant after the
/// other.
class phoneme_track {
public:
    /// `rules` stays unchanged while the track is in use.
    phoneme_track(const phn_marker_list& markers, const articulator_rules& rules);

    /// The phonemes around `t`, which is never earlier than in the call before. Valid until the
    /// next call.
    ///
    /// Kept: a phoneme counts by its start, within the largest attack before `t` and the largest
    /// release after it, although a phoneme of the past lingers by its release and one of the
    /// future comes by its attack; rule texts are tuned to what is seen that way.
    const neighbourhood& Around(int32_t t);

private:
    std::vector<sounding_phoneme> phonemes;
    std::vector<bool> moved;
    int64_t largestAttack;
    int64_t largestRelease;
    size_t nextPhoneme = 0; ///< the first that no walk has passed yet
    sweep_window window;
    neighbourhood around;
};

} // namespace tessarin
