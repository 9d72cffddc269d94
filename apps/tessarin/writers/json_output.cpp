#include <cmath>

#include <nlohmann/json.hpp>

#include "apps/tessarin/writers/output_formats.h"
#include "apps/tessarin/writers/phoneme_symbols.h"
#include "tessarin/tessarin_c.h"

namespace {

using json = nlohmann::ordered_json;

/// Below it is the margin of a word that the engine did not look at.
constexpr float kNotLookedAt = -1e8f;

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
    if (!span.reading.empty()) {
        entry["reading"] = span.reading;
    }
    return entry;
}

/// The words in the order of the text. Where it was looked for, each reports whether it was said;
/// one that was not has no times.
json WordsJson(const timed_result& result) {
    json list = json::array();
    const auto add = [&](const timed_span& word, bool isSaid) {
        json entry = isSaid ? SpanJson(word)
                            : json{{"text", word.text},
                                   {"text_offset", word.textOffset},
                                   {"text_length", word.textLength}};
        if (result.match) {
            entry["said"] = isSaid;
            if (word.confidence >= 0.0f) {
                entry["confidence"] = Rounded(word.confidence);
            }
            if (word.margin > kNotLookedAt) {
                entry["margin"] = Rounded(word.margin);
            }
        }
        list.push_back(std::move(entry));
    };
    auto unsaid = result.unsaid.begin();
    for (const timed_span& word : result.words) {
        while (unsaid != result.unsaid.end() && unsaid->textOffset < word.textOffset) {
            add(*unsaid++, false);
        }
        add(word, true);
    }
    while (unsaid != result.unsaid.end()) {
        add(*unsaid++, false);
    }
    return list;
}

json MatchJson(const timed_match& match) {
    json entry;
    if (match.score >= 0.0f) {
        entry["score"] = Rounded(match.score);
    }
    entry["verdict"] = match.verdict;
    entry["reason"] = match.reason;
    entry["loose"] = match.isLoose;
    entry["margin"] = Rounded(match.margin);
    entry["fit"] = Rounded(match.fit);
    if (match.duration >= 0.0f) {
        entry["duration"] = Rounded(match.duration);
    }
    entry["spread"] = Rounded(match.spread);
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

std::string WriteJson(const timed_result& result, uint32_t alphabet) {
    json phonemes = json::array();
    for (const timed_phoneme& phoneme : result.phonemes) {
        json entry{{"label", phoneme.label},
                   {"start_ms", phoneme.startMs},
                   {"end_ms", phoneme.endMs},
                   {"score", Rounded(phoneme.score)}};
        if (alphabet != TESSARIN_LABELS) {
            entry["symbol"] = SymbolOf(phoneme.label, alphabet);
        }
        if (phoneme.confidence >= 0.0f) {
            entry["confidence"] = Rounded(phoneme.confidence);
        }
        phonemes.push_back(std::move(entry));
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
                     {"words", WordsJson(result)},
                     {"events", std::move(events)},
                     {"frames", FramesJson(result.frames)},
                     {"curves", std::move(curves)},
                     {"stretches", FramesJson(result.stretches)}};
    if (!result.loudness.empty()) {
        document["loudness"] = LoudnessJson(result.loudness);
    }
    if (result.adaptationGain >= 0.0f) {
        document["adaptation"] = {{"gain", Rounded(result.adaptationGain)}};
    }
    if (result.match) {
        document["match"] = MatchJson(*result.match);
    }
    return document.dump(1, ' ', false, json::error_handler_t::replace) + "\n";
}
