#include "results/concrete_sync_marker_collection.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "base/flog.h"
#include "base/text_copy.h"
#include "results/saturated.h"
#include "results/score_mapping.h"
#include "results/sync_marker.h"

namespace tessarin {

CConcreteSyncMarkerCollection::CConcreteSyncMarkerCollection() : TArray<CSyncMarker>(kGrowthStep) {
    flog scope("CConcreteSyncMarkerCollection::CConcreteSyncMarkerCollection");
}

CConcreteSyncMarkerCollection::CConcreteSyncMarkerCollection(const CSyncMarker* first,
                                                             const CSyncMarker* last)
    : TArray<CSyncMarker>(kGrowthStep) {
    flog scope("CConcreteSyncMarkerCollection::CConcreteSyncMarkerCollection");
    for (const CSyncMarker* marker = first; marker != last; ++marker) {
        CSyncMarker copy;
        if (CopySyncMarker(copy, *marker) != kNoError) {
            return;
        }
        if (Add(copy) == 0) {
            DeleteSyncMarker(copy);
            return;
        }
    }
}

CConcreteSyncMarkerCollection::~CConcreteSyncMarkerCollection() {
    flog scope("CConcreteSyncMarkerCollection::~CConcreteSyncMarkerCollection");
    CConcreteSyncMarkerCollection::clear();
}

void CConcreteSyncMarkerCollection::PostProcessMarkers() {
    numSeen = kUnseen; // a run has filled the array, perhaps with as many markers as were there
    if ((m_flags & kPostProcessScores) == 0) {
        return;
    }
    std::string_view currentLabel;
    const CSyncMarker* lastPhoneme = nullptr;
    for (CSyncMarker& marker : static_cast<TArray<CSyncMarker>&>(*this)) {
        if (marker.type != kPhonemeMarker && marker.type != kStateMarker) {
            continue;
        }
        if (marker.type == kPhonemeMarker) {
            currentLabel = FieldText(marker.label);
            lastPhoneme = &marker;
        }
        // A phoneme that the end of the run before has cut in two counts its full length.
        const std::string_view carried = FieldText(m_carried_label);
        const bool goesOn = !carried.empty() && carried == currentLabel;
        const int64_t durationMs =
            int64_t{marker.end} - marker.start + (goesOn ? m_carried_duration : 0);
        marker.score = MapScore(marker.score, currentLabel, durationMs);
        // Kept: the first sound uses up what was carried, whatever its label, as hosts that feed a
        // collection run by run have tuned their scores to.
        CopyText(m_carried_label, "");
    }
    if (lastPhoneme == nullptr) {
        return;
    }
    const std::string_view lastLabel = FieldText(lastPhoneme->label);
    int64_t carriedMs = int64_t{lastPhoneme->end} - lastPhoneme->start;
    if (lastLabel == FieldText(m_carried_label)) {
        carriedMs += m_carried_duration; // reached by a phoneme without a label alone
    }
    m_carried_duration = Saturated(carriedMs);
    CopyText(m_carried_label, lastLabel);
}

void CConcreteSyncMarkerCollection::set_flags(uint32_t flags) {
    m_flags = flags;
}

uint32_t CConcreteSyncMarkerCollection::get_flags() {
    return m_flags;
}

int32_t CConcreteSyncMarkerCollection::size() {
    return GetSize();
}

CSyncMarker* CConcreteSyncMarkerCollection::begin() {
    flog scope("CConcreteSyncMarkerCollection::begin");
    numSeen = kUnseen;
    return IsEmpty() ? nullptr : TArray<CSyncMarker>::begin();
}

CSyncMarker* CConcreteSyncMarkerCollection::end() {
    flog scope("CConcreteSyncMarkerCollection::end");
    numSeen = kUnseen;
    return IsEmpty() ? nullptr : TArray<CSyncMarker>::end();
}

void CConcreteSyncMarkerCollection::clear() {
    numSeen = kUnseen;
    while (!IsEmpty()) {
        DeleteSyncMarker((*this)[GetSize() - 1]);
        RemoveAt(GetSize() - 1);
    }
}

void CConcreteSyncMarkerCollection::add_marker(const CSyncMarker& marker) {
    flog scope("CConcreteSyncMarkerCollection::add_marker");
    CSyncMarker added = marker; // growth may free the storage that `marker` lies in
    const int32_t latest = FindLatestStart();
    int32_t place = GetSize();
    if (added.start < latest) {
        const TArray<CSyncMarker>& markers = *this;
        const auto isLater = [&](const CSyncMarker& other) { return other.start > added.start; };
        place = static_cast<int32_t>(std::find_if(markers.begin(), markers.end(), isLater) -
                                     markers.begin());
    }
    ReserveAhead(*this);
    if (InsertAt(place, added) == 0) {
        DeleteSyncMarker(added);
        return;
    }
    latestStart = std::max(latest, added.start);
    numSeen = GetSize();
}

int32_t CConcreteSyncMarkerCollection::FindLatestStart() {
    if (numSeen != GetSize()) {
        latestStart = std::numeric_limits<int32_t>::min();
        for (const CSyncMarker& marker : static_cast<TArray<CSyncMarker>&>(*this)) {
            latestStart = std::max(latestStart, marker.start);
        }
        numSeen = GetSize();
    }
    return latestStart;
}

} // namespace tessarin
