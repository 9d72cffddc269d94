#include "recognition/markers/flush_markers.h"

#include <algorithm>
#include <cmath>

#include "base/guarded.h"
#include "base/text_copy.h"
#include "model/accoustic_hmm.h"
#include "recognition/markers/time_base.h"
#include "results/saturated.h"
#include "results/sync_marker.h"

namespace tessarin {
namespace {

bool Empty(TArray<CSyncMarker>& results) {
    for (CSyncMarker& marker : results) {
        DeleteSyncMarker(marker);
    }
    return results.SetSize(0, 1024) != 0;
}

/// One walk along a path.
struct flush_writer {
    error_code Walk(std::span<const uint8_t> path);
    void FinishState(int32_t end);
    bool FinishPhone(int32_t end, float score);
    float Score(int32_t first, int32_t end) const {
        return std::trunc(amplitudes.Amplitude(first, end));
    }
    CSyncMarker Span(uint32_t type, int32_t first, int32_t end) const;

    const CAccousticHMM& model;
    const amplitude_scale& amplitudes;
    const double periodMs;
    const bool stateMarkers;
    TArray<CSyncMarker>& results;

    std::vector<CSyncMarker> segments; // of the phoneme at hand
    int32_t phone = 0;
    int32_t phoneStart = 0;
    int32_t stateStart = 0;
};

error_code flush_writer::Walk(std::span<const uint8_t> path) {
    phone = path[0] / model.numStates;
    const auto count = static_cast<int32_t>(path.size());
    for (int32_t t = 1; t < count; ++t) {
        const uint8_t state = path[static_cast<size_t>(t)];
        if (stateMarkers && state != path[static_cast<size_t>(t) - 1]) {
            FinishState(t);
        }
        if (state / model.numStates == phone) {
            continue;
        }
        if (!FinishPhone(t, segments.empty() ? Score(phoneStart, t) : segments.front().score)) {
            return kOutOfMemory;
        }
        phone = state / model.numStates;
        phoneStart = stateStart = t;
    }
    segments.clear();
    return FinishPhone(count, Score(stateStart, count)) ? kNoError : kOutOfMemory;
}

/// Ends a segment before observation `end`.
void flush_writer::FinishState(int32_t end) {
    CSyncMarker marker = Span(kStateMarker, stateStart, end);
    marker.score = Score(stateStart, end);
    stateStart = end;
    if (segments.empty() || segments.back().score != marker.score) {
        segments.push_back(marker);
    }
}

/// Ends the phoneme before observation `end`, and writes its segments after it.
bool flush_writer::FinishPhone(int32_t end, float score) {
    CSyncMarker marker = Span(kPhonemeMarker, phoneStart, end);
    marker.score = score;
    if (const char* label = model.GetLabel(phone, false)) {
        CopyText(marker.label, label);
    }
    bool isWritten = results.Add(marker) != 0;
    for (size_t i = 1; i < segments.size() && isWritten; ++i) {
        isWritten = results.Add(segments[i]) != 0;
    }
    segments.clear();
    return isWritten;
}

CSyncMarker flush_writer::Span(uint32_t type, int32_t first, int32_t end) const {
    CSyncMarker marker{};
    marker.type = type;
    marker.start = FrameTimeMs(first, periodMs);
    marker.end = FrameTimeMs(end, periodMs);
    marker.text_offset = phone;
    return marker;
}

void Shift(CSyncMarker& marker, int64_t ms) {
    marker.start = Saturated(marker.start + ms);
    marker.end = Saturated(marker.end + ms);
}

} // namespace

error_code GenerateFlushMarkers(std::span<const uint8_t> path, const CAccousticHMM& model,
                                const amplitude_scale& amplitudes, double periodMs,
                                bool stateMarkers, TArray<CSyncMarker>& results) {
    if (!Empty(results)) {
        return kOutOfMemory;
    }
    if (path.empty()) {
        return kNoError;
    }
    flush_writer writer{.model = model,
                        .amplitudes = amplitudes,
                        .periodMs = periodMs,
                        .stateMarkers = stateMarkers,
                        .results = results,
                        .segments = {}};
    return Guarded([&] { return writer.Walk(path); });
}

error_code flush_overlap::Join(int32_t overlapMs, TArray<CSyncMarker>& results) {
    const int64_t lastEnd = history.empty() ? 0 : history.back().end;
    const int64_t shift = results.IsEmpty() ? 0 : lastEnd - results[0].start;
    const int64_t cut = lastEnd - overlapMs / 2;
    return Guarded([&]() -> error_code {
        history.insert(history.end(), results.begin(), results.end());
        for (auto added = history.end() - results.GetSize(); added != history.end(); ++added) {
            Shift(*added, shift);
        }
        if (!Empty(results)) {
            return kOutOfMemory;
        }
        std::erase_if(history, [&](const CSyncMarker& marker) { return marker.end <= cut; });
        const int64_t begin = history.empty() ? 0 : std::max<int64_t>(history.front().start, cut);
        for (CSyncMarker& marker : history) {
            marker.start = Saturated(std::max<int64_t>(marker.start, cut));
            // The history counts from there too, or its times would outgrow their type in time.
            Shift(marker, -begin);
            if (results.Add(marker) == 0) {
                return kOutOfMemory;
            }
        }
        return kNoError;
    });
}

} // namespace tessarin
