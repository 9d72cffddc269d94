#include "recognition/aligner/dormant_region.h"

#include "base/flog.h"
#include "base/text_copy.h"
#include "model/accoustic_hmm.h"
#include "recognition/markers/time_base.h"
#include "recognition/observation_source.h"

namespace tessarin {

error_code ReadDormantMarkerRegion(const CAccousticHMM& model, IObservationStream& stream,
                                   const state_rec* const* graph, uint32_t positions,
                                   double periodMs, TArray<CSyncMarker>& phones,
                                   TArray<float>& energies) {
    flog scope("CTextbasedPhnRecognizer::ReadDormantMarkerRegion");
    observation_source source(stream, model.descriptor.numFeatures);
    if (const error_code code = source.Open(&energies); code != kNoError) {
        return code;
    }
    const auto frames = static_cast<int32_t>(source.GetCount());
    for (int32_t i = 0; i < frames; ++i) {
        if (const error_code code = source.Next(); code != kNoError) {
            return code;
        }
    }
    if (positions == 0 || frames == 0) {
        return kNoError;
    }
    CSyncMarker region{};
    region.type = kPhonemeMarker;
    if (const char* label = model.GetLabel(graph[0]->phone, false)) {
        CopyText(region.label, label);
    }
    region.start = FrameTimeMs(0, periodMs);
    region.end = FrameTimeMs(frames, periodMs);
    return phones.Add(region) != 0 ? kNoError : kOutOfMemory;
}

} // namespace tessarin
