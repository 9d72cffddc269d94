#include <memory>

#include "articulation/concrete_sync_marker_collection.h"
#include "articulation/phoneme_mixture_articulator.h"
#include "frame/flog.h"
#include "frame/guarded.h"
#include "tessarin/articulator.h"
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

int32_t CreatePhonemeArticulator(IPhnMixtureArticulator** out, uint32_t /*options*/) {
    if (out == nullptr) {
        return kOutOfMemory;
    }
    *out = nullptr;
    return Guarded([&] {
        *out = std::make_unique<CPhonemeMixtureArticulator>().release();
        return kNoError;
    });
}

void DestroyPhonemeArticulator(IPhnMixtureArticulator* articulator) {
    if (articulator != nullptr) {
        articulator->DestroySelf();
    }
}
