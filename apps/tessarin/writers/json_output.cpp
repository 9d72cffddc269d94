#include <cmath>

#include <nlohmann/json.hpp>

#include "apps/tessarin/writers/output_formats.h"
#include "tessarin/tessarin_c.h"

namespace {

using json = nlohmann::ordered_json;

/// Weights and scores are written to four decimals: finer steps are not seen and make files larger.
double Rounded(float value) {
    return std::round(static_cast<double>(value) * 1e4) / 1e4;
}

json SpanJson(const timed_span& span) {
    json entry = {{"text", span.text},
                  {"start_ms", span.startMs},
                  {"end_ms", span.endMs},
                  {"text_offset", span.textOffset},
                  {"text_length", span.textLength}};
    if ((span.flags & TESSARIN_WORD_EMPHASIS) != 0) {
        entry["emphasis"] = true;
    }
    if ((span.flags & TESSARIN_WORD_DRAWL) != 0) {
        entry["drawl"] = true;
    }
    return entry;
}

json FrameJson(const mouth_frame& frame) {
    json weights = json::object();
    for (const auto& [label, weight] : frame.weights) {
        weights[label] = Rounded(weight);
    }
    return {{"start_ms", frame.startMs}, {"end_ms", frame.endMs}, {"weights", weights}};
}

json FramesJson(const std::vector<mouth_frame>& frames) {
    json list = json::array();
    for (const mouth_frame& frame : frames) {
        list.push_back(FrameJson(frame));
    }
    return list;
}

json CurveJson(const weight_curve& curve) {
    json keys = json::array();
    for (const auto& [ms, weight] : curve.keys) {
        keys.push_back({ms, Rounded(weight)});
    }
    return {{"label", curve.label},
            {"start_ms", curve.startMs},
            {"end_ms", curve.endMs},
            {"keys", std::move(keys)}};
}

json LoudnessJson(const std::vector<float>& loudness) {
    json db = json::array();
    for (const float value : loudness) {
        db.push_back(std::round(static_cast<double>(value) * 10.0) / 10.0);
    }
    return {{"step_ms", 10}, {"db", std::move(db)}};
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
    json curves = json::array();
    for (const weight_curve& curve : result.curves) {
        curves.push_back(CurveJson(curve));
    }
    json document = {{"version", kJsonVersion},
                     {"audio", result.audio},
                     {"duration_ms", result.durationMs},
                     {"code", result.code},
                     {"message", result.message},
                     {"phonemes", std::move(phonemes)},
                     {"words", std::move(words)},
                     {"events", std::move(events)},
                     {"frames", FramesJson(result.frames)},
                     {"curves", std::move(curves)},
                     {"stretches", FramesJson(result.stretches)}};
    if (!result.loudness.empty()) {
        document["loudness"] = LoudnessJson(result.loudness);
    }
    return document.dump(1, ' ', false, json::error_handler_t::replace) + "\n";
}
