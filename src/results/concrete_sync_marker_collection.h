#pragma once

#include <cstdint>

#include "base/live_object.h"
#include "base/tarray.h"
#include "tessarin/sync_results.h"

namespace tessarin {

/// The collection that hosts hold as ISyncResultsCollection. Searches append to it as an array,
/// in the order in which they produce markers; hosts insert by time.
///
/// The array moves records as raw bytes: whoever empties or overwrites it as a TArray first calls
/// DeleteSyncMarker on the records that go.
class CConcreteSyncMarkerCollection : public TArray<CSyncMarker>, public ISyncResultsCollection {
public:
    static constexpr int32_t kGrowthStep = 100;

    CConcreteSyncMarkerCollection();
    /// A deep copy of the markers from `first` up to `last`; both may be null. Without memory it
    /// ends early. Flags and what is carried between runs start afresh.
    CConcreteSyncMarkerCollection(const CSyncMarker* first, const CSyncMarker* last);
    ~CConcreteSyncMarkerCollection() override;

    /// The collection that a host holds as `held`, or null for null and a host's own.
    static CConcreteSyncMarkerCollection* Find(const ISyncResultsCollection* held) {
        return live_collection::Find(held);
    }

    /// Maps the scores of phonemes and state segments from amplitudes to a logarithmic scale, in
    /// which long sonorants reach at least 65, if the flag kPostProcessScores asks for it.
    virtual void PostProcessMarkers();

    void set_flags(uint32_t flags) override;
    uint32_t get_flags() override;
    int32_t size() override;
    CSyncMarker* begin() override;
    CSyncMarker* end() override;
    void clear() override;
    void add_marker(const CSyncMarker& marker) override;

private:
    using live_collection = live_object<CConcreteSyncMarkerCollection, ISyncResultsCollection>;

    static constexpr int32_t kUnseen = -1;

    int32_t FindLatestStart();

    live_collection self{*this};
    uint32_t m_flags = 0;
    int32_t m_carried_duration = 0; ///< milliseconds of the last phoneme of the run before
    char m_carried_label[8] = {};   ///< its label

    /// The latest start among the markers, when there are `numSeen` of them and none has been
    /// lent out since; so that markers that come in order need no search.
    int32_t latestStart = 0;
    int32_t numSeen = kUnseen;
};

} // namespace tessarin
