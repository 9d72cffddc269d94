#include "articulation/phoneme_track.h"

namespace tessarin {

phoneme_track::phoneme_track(const phn_marker_list& markers, const articulator_rules& rules)
    : largestAttack(rules.largest_attack), largestRelease(rules.largest_release) {
    phonemes.reserve(markers.size());
    moved.reserve(markers.size());
    for (const phn_marker& marker : markers) {
        const phoneme_label label(marker.label);
        phonemes.push_back({marker.start, marker.end, marker.score, label, rules.Find(label)});
        moved.push_back(marker.moved);
    }
}

const neighbourhood& phoneme_track::Around(int32_t t) {
    const int64_t reachStart = t - largestAttack;
    const int64_t reachEnd = t + largestRelease;
    // A walk goes on to the first phoneme beyond the reach. Those that a rule has shifted may stand
    // out of order and do not end it.
    while (nextPhoneme < phonemes.size() &&
           (phonemes[nextPhoneme].start <= reachEnd || moved[nextPhoneme])) {
        window.Add(static_cast<int32_t>(nextPhoneme), phonemes[nextPhoneme].start);
        ++nextPhoneme;
    }
    window.Advance(reachEnd, [&](int32_t index) {
        const sounding_phoneme& phoneme = phonemes[static_cast<size_t>(index)];
        return phoneme.end <= t && phoneme.start < reachStart;
    });

    around.current = nullptr;
    around.before.clear();
    around.after.clear();
    for (const int32_t index : window.Live()) {
        const sounding_phoneme& phoneme = phonemes[static_cast<size_t>(index)];
        if (phoneme.start <= t && phoneme.end > t) {
            around.current = &phoneme;
        } else if (phoneme.start > t) {
            around.after.push_back(&phoneme);
        } else if (phoneme.start >= reachStart) {
            around.before.push_back(&phoneme);
        }
    }
    return around;
}

} // namespace tessarin
