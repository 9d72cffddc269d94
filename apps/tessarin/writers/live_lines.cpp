#include "apps/tessarin/writers/live_lines.h"

#include <cmath>
#include <cstdio>
#include <span>

#include <nlohmann/json.hpp>

namespace {

using json = nlohmann::ordered_json;

/// Four decimals, as in all outputs.
double Rounded(float value) {
    return std::round(static_cast<double>(value) * 1e4) / 1e4;
}

std::span<const tessarin_weight> WeightsOf(const tessarin_live_frame& frame) {
    return std::span(frame.weights).first(static_cast<size_t>(frame.count));
}

/// The weights alone: the times of live audio do not fit.
mouth_frame MouthOf(const tessarin_live_frame& frame) {
    mouth_frame mouth{};
    for (const tessarin_weight& each : WeightsOf(frame)) {
        mouth.weights.emplace_back(each.label, each.weight);
    }
    return mouth;
}

} // namespace

std::string WriteLiveJson(const tessarin_live_stretch& stretch) {
    json phonemes = json::array();
    for (const tessarin_live_phoneme& phoneme :
         std::span(stretch.phonemes, stretch.phoneme_count)) {
        phonemes.push_back({{"label", phoneme.label},
                            {"start_ms", phoneme.start_ms},
                            {"end_ms", phoneme.end_ms},
                            {"score", Rounded(phoneme.score)}});
    }
    json frames = json::array();
    for (const tessarin_live_frame& frame : std::span(stretch.frames, stretch.frame_count)) {
        json weights = json::object();
        for (const tessarin_weight& each : WeightsOf(frame)) {
            weights[each.label] = Rounded(each.weight);
        }
        frames.push_back({{"start_ms", frame.start_ms},
                          {"end_ms", frame.end_ms},
                          {"weights", std::move(weights)}});
    }
    const json line = {{"start_ms", stretch.start_ms},
                       {"end_ms", stretch.end_ms},
                       {"phonemes", std::move(phonemes)},
                       {"frames", std::move(frames)}};
    return line.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
}

std::string WriteShapesHeader(const MouthShapes& shapes) {
    std::string header = "time_ms";
    for (const std::string& shape : shapes.GetNames()) {
        header += "," + shape;
    }
    return header + "\n";
}

std::string WriteLiveShapes(const tessarin_live_stretch& stretch, const MouthShapes& shapes) {
    std::string rows;
    for (const tessarin_live_frame& frame : std::span(stretch.frames, stretch.frame_count)) {
        rows += std::to_string(frame.start_ms);
        const std::vector<std::vector<double>> mixed = shapes.Mix({MouthOf(frame)});
        for (const double weight : mixed.front()) {
            char text[32];
            std::snprintf(text, sizeof text, ",%.4f", weight);
            rows += text;
        }
        rows += "\n";
    }
    return rows;
}
