#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "articulation/phoneme_mixture_articulator.h"
#include "base/text_copy.h"
#include "results/concrete_sync_marker_collection.h"
#include "results/sync_marker.h"

namespace tessarin::test {

/// A phoneme marker of a result, as a test writes it down.
struct sound {
    std::string_view label;
    int32_t start;
    int32_t end;
    float score = 100.0f;
    uint32_t type = kPhonemeMarker;
};

inline CSyncMarker Marker(const sound& s) {
    CSyncMarker marker = {};
    ClearSyncMarker(marker);
    marker.type = s.type;
    marker.score = s.score;
    marker.start = s.start;
    marker.end = s.end;
    CopyText(marker.label, s.label);
    return marker;
}

/// A result with these markers in this order, as a search leaves it.
struct sounds : CConcreteSyncMarkerCollection {
    sounds() = default;
    explicit sounds(const std::vector<sound>& list) {
        for (const sound& s : list) {
            Add(Marker(s));
        }
    }
};

/// A frame as a map from label to weight.
inline std::map<std::string, float> Weights(const articulation& frame) {
    std::map<std::string, float> weights;
    for (int32_t i = 0; i < frame.count; ++i) {
        weights[frame.entries[i].label] += frame.entries[i].weight;
    }
    return weights;
}

/// An articulator with rules of its own.
struct ruled_articulator : CPhonemeMixtureArticulator {
    explicit ruled_articulator(std::string_view text) {
        LoadArticulatorRules(text.data(), static_cast<int32_t>(text.size()));
    }

    std::vector<articulation> Frames() { return {GetArticulationsBegin(), GetArticulationsEnd()}; }
    std::vector<articulation> Frames(const std::vector<sound>& list) {
        sounds results(list);
        GenerateArticulations(&results, nullptr);
        return Frames();
    }
};

} // namespace tessarin::test
