#include "session/live_mouth.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace tessarin {

namespace {

/// How far before its beginning a sound shows in the mouth, by the rules that are built in.
constexpr int64_t kLookAheadMs = 250;
constexpr int64_t kMemoryMs = 2000;
/// Frames of all common rates begin at multiples of this, so counting from there moves none.
constexpr int64_t kBaseStepMs = 100000;

tessarin_live_frame FrameOf(const articulation& from, int64_t baseMs) {
    tessarin_live_frame frame{baseMs + from.start, baseMs + from.end, from.count, {}};
    static_assert(sizeof frame.weights == sizeof from.entries);
    std::memcpy(frame.weights, from.entries, sizeof frame.weights);
    return frame;
}

tessarin_live_phoneme PhonemeOf(const CSyncMarker& from, int64_t startMs, int64_t endMs) {
    tessarin_live_phoneme phoneme{startMs, endMs, from.score, {}};
    std::memcpy(phoneme.label, from.label, sizeof phoneme.label);
    return phoneme;
}

} // namespace

error_code LiveMouth::Open(float frameRate) {
    IPhnMixtureArticulator* made = nullptr;
    error_code code = CreatePhonemeArticulator(&made, 0);
    articulator.reset(made);
    if (code != kNoError) {
        return code;
    }
    ISyncResultsCollection* results = nullptr;
    code = CreateSyncResultsCollection(0, &results);
    window.reset(results);
    if (code == kNoError && frameRate > 0.0f) {
        articulator->SetFrameRate(frameRate);
    }
    return code;
}

// A sound on the border of two flushes comes in two parts, which are one again here.
void LiveMouth::Add(ISyncResultsCollection& flush, int64_t ms, int64_t tailMs) {
    const int64_t begin = heardMs - tailMs;
    const CSyncMarker* const first = flush.begin();
    for (const CSyncMarker* marker = first; marker != flush.end(); ++marker) {
        const int64_t endMs = std::min(begin + marker->end - first->start, audioEndMs);
        const int64_t startMs = std::max(begin + marker->start - first->start, heardMs);
        if (marker->type != kPhonemeMarker || endMs <= startMs) {
            continue;
        }
        if (!recent.empty() && recent.back().endMs >= startMs &&
            std::strcmp(recent.back().marker.label, marker->label) == 0) {
            spoken& last = recent.back();
            const auto before = static_cast<float>(last.endMs - last.startMs);
            const auto added = static_cast<float>(endMs - startMs);
            last.marker.score =
                (last.marker.score * before + marker->score * added) / (before + added);
            last.endMs = endMs;
        } else {
            recent.push_back({*marker, startMs, endMs, false});
        }
    }
    heardMs = std::min(heardMs + ms - tailMs, audioEndMs);
}

error_code LiveMouth::TakeFinal(bool atEnd, live_stretch& out) {
    out = {};
    out.startMs = takenMs;
    out.endMs = takenMs = heardMs;
    for (spoken& each : recent) {
        if (!each.isTaken && (atEnd || &each != &recent.back())) {
            each.isTaken = true;
            out.phonemes.push_back(PhonemeOf(each.marker, each.startMs, each.endMs));
        }
    }
    const error_code code = MakeFrames(atEnd ? heardMs : heardMs - kLookAheadMs, out.frames);
    Forget();
    return code;
}

error_code LiveMouth::MakeFrames(int64_t untilMs, std::vector<tessarin_live_frame>& out) {
    if (untilMs <= framesUntilMs) {
        return kNoError;
    }
    window->clear();
    for (const spoken& each : recent) {
        CSyncMarker marker = each.marker;
        marker.start = static_cast<int32_t>(std::max(each.startMs - baseMs, -kBaseStepMs));
        marker.end = static_cast<int32_t>(each.endMs - baseMs);
        window->add_marker(marker);
    }
    const error_code code = articulator->GenerateArticulations2(
        window.get(), nullptr, static_cast<int32_t>(framesUntilMs - baseMs),
        static_cast<int32_t>(untilMs - baseMs));
    if (code != kNoError) {
        return code;
    }
    const int64_t from = framesUntilMs;
    for (const auto* frame = articulator->GetArticulationsBegin();
         frame != articulator->GetArticulationsEnd(); ++frame) {
        if (baseMs + frame->start >= from && baseMs + frame->end <= untilMs) {
            out.push_back(FrameOf(*frame, baseMs));
            framesUntilMs = baseMs + frame->end;
        }
    }
    return kNoError;
}

void LiveMouth::Forget() {
    std::erase_if(recent, [&](const spoken& each) {
        return each.isTaken && each.endMs < framesUntilMs - kMemoryMs;
    });
    // What stays may be one long silence; its beginning is of no matter.
    const int64_t oldest = framesUntilMs - kMemoryMs;
    baseMs = std::max(baseMs, oldest / kBaseStepMs * kBaseStepMs);
}

} // namespace tessarin
