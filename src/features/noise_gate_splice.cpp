#include "features/noise_gate_splice.h"

#include <cstring>

#include "audio/non_rtdb_noise_gate_stream.h"
#include "base/counted_ptr.h"
#include "features/spectral_stream.h"

namespace tessarin {

namespace {

// A host's stage might lead back to itself.
constexpr int kMostStages = 64;

/// A place in a chain: after `source`, before `parent`, which is null before the analysis.
struct gate_place {
    CPCMRdrStream* source = nullptr;
    CPCMRdrStream* parent = nullptr;
};

/// The stage called `name`, and the one that reads it.
gate_place FindStage(CPCMRdrStream* head, const char* name) {
    gate_place place{head, nullptr};
    for (int i = 0; i < kMostStages && place.source != nullptr; ++i) {
        if (std::strcmp(place.source->GetStreamName(), name) == 0) {
            return place;
        }
        place = {place.source->GetSourceStream(), place.source};
    }
    return {};
}

bool Ends(CPCMRdrStream* stage) {
    int stages = 0;
    while (stage != nullptr && ++stages <= kMostStages) {
        stage = stage->GetSourceStream();
    }
    return stage == nullptr;
}

gate_place FindPlace(CPCMRdrStream* head) {
    if (CPCMRdrStream* emphasis = FindStage(head, "PreEmph").source) {
        return {emphasis->GetSourceStream(), emphasis};
    }
    if (!Ends(head)) {
        return {};
    }
    const gate_place resampler = FindStage(head, "Resample");
    return resampler.source != nullptr ? resampler : gate_place{head, nullptr};
}

} // namespace

error_code InsertNoiseGate(CSpectralStream& stream, float thresholdDb, float percentile,
                           int32_t rampMs, int32_t minQuietMs, int32_t maxBlipMs) {
    const auto gate = counted_ptr<NonRTDBNoiseGateStream>::Adopt(new NonRTDBNoiseGateStream);
    const gate_place place = FindPlace(stream.GetSource());
    if (place.source == nullptr) {
        return kNotAvailable;
    }
    const error_code code =
        gate->Instantiate(place.source, 1, thresholdDb, percentile, minQuietMs, maxBlipMs, rampMs);
    if (code != kNoError) {
        return code;
    }
    if (place.parent != nullptr) {
        return place.parent->SetSourceStream(gate.get());
    }
    stream.SetSource(gate.get());
    return kNoError;
}

} // namespace tessarin
