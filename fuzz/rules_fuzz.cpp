#include <cstddef>
#include <cstdint>

#include "articulation/phoneme_mixture_articulator.h"
#include "base/text_copy.h"
#include "results/concrete_sync_marker_collection.h"
#include "results/sync_marker.h"

using namespace tessarin;

/// A rule text from outside: it reads or it answers a code, and what was read makes frames.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CConcreteSyncMarkerCollection results;
    int32_t time = 0;
    for (const char* label : {"AA", "b", "s", "x", "l"}) {
        CSyncMarker marker = {};
        ClearSyncMarker(marker);
        marker.type = kPhonemeMarker;
        marker.start = time;
        marker.end = time += 60;
        marker.score = 80.0f;
        CopyText(marker.label, label);
        results.Add(marker);
    }
    for (uint32_t flags = 0; flags < 8; ++flags) {
        CPhonemeMixtureArticulator articulator;
        articulator.LoadArticulatorRules(reinterpret_cast<const char*>(data),
                                         static_cast<int32_t>(size));
        articulator.SetFrameRate(60.0f); // the rate of the text would choose the size of the work
        articulator.SetFlags(flags);
        articulator.GenerateArticulations(&results, nullptr);
        articulator.GenerateEnvelopes();
        articulator.Quanitze(-1, -1, 3);
    }
    return 0;
}
