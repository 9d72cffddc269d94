#include <memory>

#include "base/flog.h"
#include "base/guarded.h"
#include "results/concrete_sync_marker_collection.h"
#include "tessarin/sync_results.h"

using namespace tessarin;

int32_t CreateSyncResultsCollection(uint32_t flags, ISyncResultsCollection** out) {
    flog scope("CreateSyncResultsCollection");
    if (out == nullptr) {
        return kOutOfMemory;
    }
    *out = nullptr;
    return Guarded([&] {
        auto collection = std::make_unique<CConcreteSyncMarkerCollection>();
        collection->set_flags(flags);
        *out = collection.release();
        return kNoError;
    });
}

void DestroySyncResultsCollection(ISyncResultsCollection* collection) {
    flog scope("DestroySyncResultsCollection");
    delete collection;
}
