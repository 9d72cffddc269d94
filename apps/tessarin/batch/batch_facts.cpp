#include "apps/tessarin/batch/batch_facts.h"

#include <algorithm>
#include <cmath>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/readers/recording_samples.h"

namespace {

double Tenths(double value) {
    return std::round(value * 10.0) / 10.0;
}

bool IsSound(const timed_phoneme& phoneme) {
    return phoneme.label != "x";
}

void AddSpeech(const timed_result& result, batch_record* record) {
    const auto first = std::ranges::find_if(result.phonemes, IsSound);
    if (first == result.phonemes.end()) {
        return;
    }
    int32_t endMs = 0;
    int32_t soundMs = 0;
    int count = 0;
    for (const timed_phoneme& each : result.phonemes) {
        if (IsSound(each)) {
            endMs = std::max(endMs, each.endMs);
            soundMs += each.endMs - each.startMs;
            ++count;
        }
    }
    (*record)["silence_start_ms"] = first->startMs;
    (*record)["silence_end_ms"] = std::max<int64_t>(result.durationMs - endMs, 0);
    if (soundMs > 0) {
        // Pauses do not make a speaker slow.
        (*record)["phonemes_per_s"] = Tenths(count * 1000.0 / soundMs);
        if (!result.words.empty()) {
            (*record)["words_per_s"] =
                Tenths(static_cast<double>(result.words.size()) * 1000.0 / soundMs);
        }
    }
}

} // namespace

void AddResultFacts(const timed_result& result, batch_record* record) {
    batch_record& out = *record;
    if (result.match) {
        out["verdict"] = result.match->verdict;
        if (result.match->score >= 0.0f) {
            out["confidence"] = std::round(static_cast<double>(result.match->score) * 1e4) / 1e4;
        }
        if (!result.match->reason.empty()) {
            out["why"] = result.match->reason;
        }
        if (result.match->unscriptedMs > 0) {
            out["other_speech_ms"] = result.match->unscriptedMs;
        }
    }
    if (!result.words.empty() || !result.unsaid.empty()) {
        out["words"] = result.words.size() + result.unsaid.size();
    }
    for (const timed_span& word : result.unsaid) {
        out["unsaid"].push_back(word.text);
    }
    out["duration_ms"] = result.durationMs;
    AddSpeech(result, record);
}

void AddAudioFacts(const std::string& path, int channel, batch_record* record) {
    const data_source_handle samples = LoadSamples(path, channel, nullptr);
    tessarin_audio_facts facts{};
    const int32_t code = tessarin_measure_audio(FlatAudio(path, *samples).get(), &facts);
    if (code != TESSARIN_OK) {
        throw EngineFailure(path, code);
    }
    batch_record& out = *record;
    out["level_db"] = Tenths(static_cast<double>(facts.level_db));
    out["noise_db"] = Tenths(static_cast<double>(facts.noise_db));
    out["peak_db"] = Tenths(static_cast<double>(facts.peak_db));
    out["clip_count"] = facts.clip_count;
}
