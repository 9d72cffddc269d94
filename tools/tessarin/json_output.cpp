#include <cmath>

#include <nlohmann/json.hpp>

#include "tools/tessarin/output_formats.h"

namespace {

using json = nlohmann::ordered_json;

/// Weights and scores are told to four decimals: finer steps are not seen and make files larger.
double Rounded(float value) {
    return std::round(static_cast<double>(value) * 1e4) / 1e4;
}

json SpanJson(const timed_span& span) {
    return {{"text", span.text},
            {"start_ms", span.startMs},
            {"end_ms", span.endMs},
            {"text_offset", span.textOffset},
            {"text_length", span.textLength}};
}

json FrameJson(const mouth_frame& frame) {
    json weights = json::object();
    for (const auto& [label, weight] : frame.weights) {
        weights[label] = Rounded(weight);
    }
    return {{"start_ms", frame.startMs}, {"end_ms", frame.endMs}, {"weights", weights}};
}

} // namespace

std::string WriteJson(const timed_result& result) {
    json phonemes = json::array();
    for (const timed_phoneme& phoneme : result.phonemes) {
        phonemes.push_back({{"label", phoneme.label},
                            {"start_ms", phoneme.startMs},
                            {"end_ms", phoneme.endMs},
                            {"score", Rounded(phoneme.score)}});
    }
    json words = json::array();
    for (const timed_span& word : result.words) {
        words.push_back(SpanJson(word));
    }
    json events = json::array();
    for (const timed_span& event : result.events) {
        json entry = SpanJson(event);
        entry["type"] = SpanTypeName(event.type);
        events.push_back(std::move(entry));
    }
    json frames = json::array();
    for (const mouth_frame& frame : result.frames) {
        frames.push_back(FrameJson(frame));
    }
    const json document = {{"audio", result.audio},
                           {"duration_ms", result.durationMs},
                           {"code", result.code},
                           {"message", result.message},
                           {"phonemes", std::move(phonemes)},
                           {"words", std::move(words)},
                           {"events", std::move(events)},
                           {"frames", std::move(frames)}};
    return document.dump(1, ' ', false, json::error_handler_t::replace) + "\n";
}
