#include "recognition/markers/marker_generation.h"

#include "base/text_copy.h"
#include "model/accoustic_hmm.h"
#include "recognition/markers/amplitude_scale.h"
#include "recognition/markers/time_base.h"
#include "results/sync_marker.h"
#include "tessarin/observation_stream.h"

namespace tessarin {
namespace {

amplitude_scale ScaleOf(IObservationStream& stream, const TArray<float>& energies) {
    float low = 0.0f;
    float high = 0.0f;
    stream.GetEnergyRange(&low, &high);
    return {low, high, {energies.begin(), static_cast<size_t>(energies.GetSize())}};
}

/// One walk along a path.
struct marker_writer {
    error_code Walk(const TArray<uint32_t>& path);
    bool FinishState(int32_t end);
    bool FinishPhone(int32_t end, float score);
    CSyncMarker Span(uint32_t type, int32_t first, int32_t end) const;

    const CAccousticHMM& model;
    const state_rec* const* graph;
    const amplitude_scale amplitudeScale;
    const double periodMs;
    const bool stateMarkers;
    const bool amplitudes;
    TArray<CSyncMarker>& results;
    TArray<CSyncMarker> segments; // of the phone at hand

    uint32_t numStates;
    uint32_t position = 0;
    uint32_t state = 0;
    int32_t phoneStart = 0;
    int32_t stateStart = 0;
};

error_code marker_writer::Walk(const TArray<uint32_t>& path) {
    position = path[0] / numStates;
    state = path[0];
    for (int32_t t = 1; t < path.GetSize(); ++t) {
        if (stateMarkers && path[t] != state && !FinishState(t)) {
            return kOutOfMemory;
        }
        state = path[t];
        if (state / numStates == position) {
            continue;
        }
        const float score = amplitudes ? amplitudeScale.Amplitude(phoneStart, t) : 0.0f;
        if (!FinishPhone(t, score)) {
            return kOutOfMemory;
        }
        position = state / numStates;
        phoneStart = stateStart = t;
    }
    // Kept: the last phone is as loud as its last state, and its segments are dropped; hosts that
    // read state segments know the final phoneme as the one without.
    segments.RemoveAll();
    const int32_t end = path.GetSize();
    const float score = amplitudes ? amplitudeScale.Amplitude(stateStart, end) : 0.0f;
    return FinishPhone(end, score) ? kNoError : kOutOfMemory;
}

/// Ends a segment before observation `end`.
bool marker_writer::FinishState(int32_t end) {
    CSyncMarker marker = Span(kStateMarker, stateStart, end);
    marker.score = amplitudeScale.Amplitude(stateStart, end);
    stateStart = end;
    return segments.Add(marker) != 0;
}

/// Ends the phone before observation `end`, and writes its segments after it.
bool marker_writer::FinishPhone(int32_t end, float score) {
    CSyncMarker marker = Span(kPhonemeMarker, phoneStart, end);
    marker.score = score;
    const uint32_t phone = graph != nullptr ? graph[size_t{numStates} * position]->phone : position;
    if (const char* label = model.GetLabel(static_cast<int32_t>(phone), false)) {
        CopyText(marker.label, label);
    }
    if (results.Add(marker) == 0) {
        return false;
    }
    for (const CSyncMarker& segment : segments) {
        if (results.Add(segment) == 0) {
            return false;
        }
    }
    segments.RemoveAll();
    return true;
}

CSyncMarker marker_writer::Span(uint32_t type, int32_t first, int32_t end) const {
    CSyncMarker marker{};
    marker.type = type;
    marker.start = FrameTimeMs(first, periodMs);
    marker.end = FrameTimeMs(end, periodMs);
    marker.text_offset = static_cast<int32_t>(position);
    return marker;
}

} // namespace

error_code GenerateMarkers(const TArray<uint32_t>& path, const CAccousticHMM& model,
                           IObservationStream& stream, const state_rec* const* graph,
                           const TArray<float>& energies, bool stateMarkers, bool amplitudes,
                           TArray<CSyncMarker>& results) {
    for (CSyncMarker& marker : results) {
        DeleteSyncMarker(marker);
    }
    if (results.SetSize(0, 1024) == 0) {
        return kOutOfMemory;
    }
    if (path.IsEmpty()) {
        return kNoError;
    }
    marker_writer writer{.model = model,
                         .graph = graph,
                         .amplitudeScale = ScaleOf(stream, energies),
                         .periodMs = FramePeriodMs(stream),
                         .stateMarkers = stateMarkers,
                         .amplitudes = amplitudes,
                         .results = results,
                         .segments = TArray<CSyncMarker>(model.numStates),
                         .numStates = static_cast<uint32_t>(model.numStates)};
    return writer.Walk(path);
}

} // namespace tessarin
