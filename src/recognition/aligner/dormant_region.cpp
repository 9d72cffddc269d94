#include "recognition/aligner/dormant_region.h"

#include <vector>

#include "base/flog.h"
#include "base/text_copy.h"
#include "model/accoustic_hmm.h"
#include "recognition/markers/time_base.h"
#include "tessarin/observation_stream.h"

namespace tessarin {

error_code ReadDormantMarkerRegion(const CAccousticHMM& model, IObservationStream& stream,
                                   const state_rec* const* graph, uint32_t positions,
                                   double periodMs, TArray<CSyncMarker>& phones,
                                   TArray<float>& energies) {
    flog scope("CTextbasedPhnRecognizer::ReadDormantMarkerRegion");
    const auto frames = static_cast<int32_t>(stream.GetNumObservations());
    std::vector<float> features(static_cast<size_t>(model.descriptor.numFeatures) + 3);
    for (int32_t i = 0; i < frames; ++i) {
        if (const error_code code = stream.GetObservation(features.data(), &energies[i]);
            code != kNoError) {
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
