#include "apps/tessarin/live_mouth.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "apps/tessarin/console/failure.h"

namespace {

/// How far before its beginning a sound shows in the mouth, by the rules that are built in.
constexpr int64_t kLookAheadMs = 250;
constexpr int64_t kMemoryMs = 2000;
/// Frames of all common rates begin at multiples of this, so counting anew there moves none.
constexpr int64_t kBaseStepMs = 100000;

} // namespace

LiveMouth::LiveMouth(double fps) {
    tessarin::IPhnMixtureArticulator* made = nullptr;
    int32_t code = CreatePhonemeArticulator(&made, 0);
    articulator.reset(made);
    tessarin::ISyncResultsCollection* results = nullptr;
    if (code == tessarin::kNoError) {
        code = CreateSyncResultsCollection(0, &results);
        window.reset(results);
    }
    if (code != tessarin::kNoError) {
        throw EngineFailure("articulator", code);
    }
    if (fps > 0) {
        articulator->SetFrameRate(static_cast<float>(fps));
    }
}

// A sound on the border of two flushes comes in two parts, which are one again here.
void LiveMouth::Add(tessarin::ISyncResultsCollection& flush, int64_t ms, int64_t tailMs) {
    const int64_t begin = heardMs - tailMs;
    const tessarin::CSyncMarker* const first = flush.begin();
    for (const tessarin::CSyncMarker* marker = first; marker != flush.end(); ++marker) {
        const int64_t endMs = std::min(begin + marker->end - first->start, audioEndMs);
        const int64_t startMs = std::max(begin + marker->start - first->start, heardMs);
        if (marker->type != tessarin::kPhonemeMarker || endMs <= startMs) {
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

/// To the base of this stretch. A silence may have begun weeks before it.
int32_t LiveMouth::Relative(int64_t ms) const {
    return static_cast<int32_t>(
        std::max<int64_t>(ms - baseMs, std::numeric_limits<int32_t>::min()));
}

live_stretch LiveMouth::TakeFinal(bool atEnd) {
    live_stretch stretch;
    stretch.startMs = toldMs;
    stretch.endMs = toldMs = heardMs;
    stretch.baseMs = baseMs;
    for (spoken& each : recent) {
        if (!each.isTold && (atEnd || &each != &recent.back())) {
            each.isTold = true;
            stretch.phonemes.push_back({each.marker.label, Relative(each.startMs),
                                        Relative(each.endMs), each.marker.score});
        }
    }
    stretch.frames = MakeFrames(atEnd ? heardMs : heardMs - kLookAheadMs);
    Forget();
    return stretch;
}

std::vector<mouth_frame> LiveMouth::MakeFrames(int64_t untilMs) {
    std::vector<mouth_frame> frames;
    if (untilMs <= framesUntilMs) {
        return frames;
    }
    window->clear();
    for (const spoken& each : recent) {
        tessarin::CSyncMarker marker = each.marker;
        marker.start = static_cast<int32_t>(std::max(each.startMs - baseMs, -kBaseStepMs));
        marker.end = static_cast<int32_t>(each.endMs - baseMs);
        window->add_marker(marker);
    }
    const int32_t code = articulator->GenerateArticulations2(
        window.get(), nullptr, static_cast<int32_t>(framesUntilMs - baseMs),
        static_cast<int32_t>(untilMs - baseMs));
    if (code != tessarin::kNoError) {
        throw EngineFailure("--fps", code);
    }
    const int64_t from = framesUntilMs;
    for (const auto* frame = articulator->GetArticulationsBegin();
         frame != articulator->GetArticulationsEnd(); ++frame) {
        if (baseMs + frame->start >= from && baseMs + frame->end <= untilMs) {
            frames.push_back(CopyFrame(*frame));
            framesUntilMs = baseMs + frame->end;
        }
    }
    return frames;
}

void LiveMouth::Forget() {
    std::erase_if(recent, [&](const spoken& each) {
        return each.isTold && each.endMs < framesUntilMs - kMemoryMs;
    });
    // What stays may be one long silence; its beginning is of no matter.
    const int64_t oldest = framesUntilMs - kMemoryMs;
    baseMs = std::max(baseMs, oldest / kBaseStepMs * kBaseStepMs);
}
