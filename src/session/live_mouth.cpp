#include "session/live_mouth.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "articulation/rule_text.h"
#include "base/text_copy.h"
#include "mouth/natural_rules.h"

namespace tessarin {

namespace {

constexpr int64_t kMemoryMs = 2000;
/// How far the times in the window may count before they begin again.
constexpr int64_t kBaseStepMs = 100000;

tessarin_live_frame FrameOf(const articulation& from, int64_t startMs, int64_t endMs) {
    tessarin_live_frame frame{startMs, endMs, from.count, {}};
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

void RunningLevel::Hear(float db, int64_t ms) {
    constexpr float kMaxStepDb = 20.0f;      // what is not a vowel, but noise, moves it no further
    constexpr int64_t kVowelMemoryMs = 3000; // of vowels
    heardMs = std::min(heardMs + ms, kVowelMemoryMs);
    const float step = std::clamp(db - usualDb, -kMaxStepDb, kMaxStepDb);
    usualDb += step * static_cast<float>(ms) / static_cast<float>(heardMs);
}

error_code LiveMouth::Open(const live_mouth_settings& wanted, LiveLoudness& audioLoudness) {
    settings = wanted;
    loudness = &audioLoudness;
    error_code code = CreatePhonemeArticulator(Out(articulator), 0);
    if (code == kNoError) {
        code = CreateSyncResultsCollection(0, Out(window));
    }
    if (code != kNoError) {
        return code;
    }
    const std::string rules = NaturalRulesWithin(settings.lookAheadMs);
    code = articulator->LoadArticulatorRules(rules.data(), static_cast<int32_t>(rules.size()));
    articulator->SetFrameRate(settings.frameRate);
    articulator_rules read;
    (void)ReadRuleText(rules, read);
    shaping.strength = settings.strength;
    shaping.closed = read.closed;
    shaping.frame_rate = settings.frameRate;
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
            recent.push_back({*marker, startMs, endMs, false, 0.0f});
        }
    }
    heardMs = std::min(heardMs + ms - tailMs, audioEndMs);
}

error_code LiveMouth::TakeFinal(bool atEnd, live_stretch& out) {
    out = {};
    out.startMs = takenMs;
    out.endMs = takenMs = heardMs;
    levelsFromMs =
        std::max<int64_t>(framesUntilMs - kMemoryMs, 0) / kLoudnessStepMs * kLoudnessStepMs;
    loudness->CopyFrom(levelsFromMs, levels);
    HearVoice();
    for (spoken& each : recent) {
        if (!each.isTaken && (atEnd || &each != &recent.back())) {
            each.isTaken = true;
            out.phonemes.push_back(PhonemeOf(each.marker, each.startMs, each.endMs));
        }
    }
    const error_code code =
        MakeFrames(atEnd ? heardMs : heardMs - settings.lookAheadMs, out.frames);
    Forget();
    return code;
}

error_code LiveMouth::MakeFrames(int64_t untilMs, std::vector<tessarin_live_frame>& out) {
    if (untilMs <= framesUntilMs) {
        return kNoError;
    }
    FillWindow();
    const error_code code = articulator->GenerateArticulations2(
        window.get(), nullptr, static_cast<int32_t>(framesUntilMs - baseMs),
        static_cast<int32_t>(untilMs - baseMs));
    if (code != kNoError) {
        return code;
    }
    for (const articulation& frame : Shaped()) {
        // By its number, so that frames of any rate follow each other without gaps.
        const int64_t number = baseFrame + std::llround(frame.start / FrameMs());
        const auto startMs = std::llround(static_cast<double>(number) * FrameMs());
        const auto endMs = std::llround(static_cast<double>(number + 1) * FrameMs());
        if (startMs >= framesUntilMs && endMs <= untilMs) {
            out.push_back(FrameOf(frame, startMs, endMs));
            framesUntilMs = endMs;
        }
    }
    return kNoError;
}

/// Learns from vowels that have ended, and has sounds keep what they were against the voice.
void LiveMouth::HearVoice() {
    const LoudnessCurve curve = WindowLoudness();
    if (curve.IsEmpty()) {
        return;
    }
    for (spoken& each : recent) {
        if (each.isTaken || ClassOf(FieldText(each.marker.label)) != mouth_class::vowel) {
            continue;
        }
        const float db = curve.Mean(each.startMs - baseMs, each.endMs - baseMs);
        if (&each != &recent.back()) {
            level.Hear(db, each.endMs - each.startMs);
        }
        each.db = db - level.GetUsualDb();
    }
}

/// The sounds as the articulator takes them, each as loud as it is against the voice; consonants
/// are as loud as the vowel before them.
void LiveMouth::FillWindow() {
    window->clear();
    windowPhonemes.clear();
    float phraseDb = 0.0f;
    for (const spoken& each : recent) {
        CSyncMarker marker = each.marker;
        marker.start = static_cast<int32_t>(std::max(each.startMs - baseMs, -kBaseStepMs));
        marker.end = static_cast<int32_t>(each.endMs - baseMs);
        float share = 1.0f;
        switch (ClassOf(FieldText(marker.label))) {
        case mouth_class::vowel:
            phraseDb = each.db;
            share = OpeningOf(each.db);
            break;
        case mouth_class::consonant:
            share = ConsonantLevelOf(phraseDb);
            break;
        default:
            break;
        }
        marker.score = 100.0f * share;
        window->add_marker(marker);
        tessarin_phoneme& phoneme = windowPhonemes.emplace_back(
            tessarin_phoneme{marker.start, marker.end, marker.score, {}});
        std::memcpy(phoneme.label, marker.label, sizeof phoneme.label);
    }
}

std::vector<articulation> LiveMouth::Shaped() {
    std::vector<articulation> frames(articulator->GetArticulationsBegin(),
                                     articulator->GetArticulationsEnd());
    shaping.usual_db = level.GetUsualDb();
    ShapeFrames(windowPhonemes, WindowLoudness(), shaping, frames);
    return frames;
}

void LiveMouth::Forget() {
    std::erase_if(recent, [&](const spoken& each) {
        return each.isTaken && each.endMs < framesUntilMs - kMemoryMs;
    });
    // What stays may be one long silence; its beginning is of no matter.
    const auto step = std::max<int64_t>(std::llround(kBaseStepMs / FrameMs()), 1);
    const auto oldest = static_cast<int64_t>(
        static_cast<double>(std::max<int64_t>(framesUntilMs - kMemoryMs, 0)) / FrameMs());
    baseFrame = std::max(baseFrame, oldest / step * step);
    baseMs = std::llround(static_cast<double>(baseFrame) * FrameMs());
}

} // namespace tessarin
