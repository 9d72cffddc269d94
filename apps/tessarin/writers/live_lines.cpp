#include "apps/tessarin/writers/live_lines.h"

#include <cmath>
#include <cstdio>

#include <nlohmann/json.hpp>

namespace {

using json = nlohmann::ordered_json;

/// Four decimals, as in all outputs.
double Rounded(float value) {
    return std::round(static_cast<double>(value) * 1e4) / 1e4;
}

} // namespace

std::string WriteLiveJson(const live_stretch& stretch) {
    json phonemes = json::array();
    for (const timed_phoneme& phoneme : stretch.phonemes) {
        phonemes.push_back({{"label", phoneme.label},
                            {"start_ms", stretch.baseMs + phoneme.startMs},
                            {"end_ms", stretch.baseMs + phoneme.endMs},
                            {"score", Rounded(phoneme.score)}});
    }
    json frames = json::array();
    for (const mouth_frame& frame : stretch.frames) {
        json weights = json::object();
        for (const auto& [label, weight] : frame.weights) {
            weights[label] = Rounded(weight);
        }
        frames.push_back({{"start_ms", stretch.baseMs + frame.startMs},
                          {"end_ms", stretch.baseMs + frame.endMs},
                          {"weights", std::move(weights)}});
    }
    const json line = {{"start_ms", stretch.startMs},
                       {"end_ms", stretch.endMs},
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

std::string WriteLiveShapes(const live_stretch& stretch, const MouthShapes& shapes) {
    std::string rows;
    const std::vector<std::vector<double>> mixed = shapes.Mix(stretch.frames);
    for (size_t i = 0; i < mixed.size(); ++i) {
        rows += std::to_string(stretch.baseMs + stretch.frames[i].startMs);
        for (const double weight : mixed[i]) {
            char text[32];
            std::snprintf(text, sizeof text, ",%.4f", weight);
            rows += text;
        }
        rows += "\n";
    }
    return rows;
}
