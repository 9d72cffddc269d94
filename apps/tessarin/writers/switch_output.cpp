#include <cstdio>
#include <vector>

#include <nlohmann/json.hpp>

#include "apps/tessarin/writers/markup.h"
#include "apps/tessarin/writers/output_formats.h"

namespace {

using json = nlohmann::ordered_json;

/// In hundredths as usual, or in milliseconds where that would round.
std::string Seconds(int64_t ms) {
    char text[32];
    std::snprintf(text, sizeof(text), ms % 10 == 0 ? "%.2f" : "%.3f",
                  static_cast<double>(ms) / 1000.0);
    return text;
}

/// The end of the recording. The track's frames go past it, to the end of the last one. Timings
/// from elsewhere may claim an end before their last phoneme; then that of the frames holds.
int64_t EndOf(const timed_result& result) {
    const bool isKnown =
        result.durationMs > 0 &&
        (result.phonemes.empty() || result.phonemes.back().startMs < result.durationMs);
    return isKnown || result.frames.empty() ? result.durationMs : result.frames.back().endMs;
}

/// The switches that a listener of the recording still sees.
std::vector<MouthShapes::shape_switch> SwitchesOf(const timed_result& result,
                                                  const MouthShapes& shapes, int holdMs) {
    std::vector<MouthShapes::shape_switch> switches = shapes.FindSwitches(result.frames, holdMs);
    std::erase_if(switches, [&](const auto& each) { return each.startMs >= EndOf(result); });
    return switches;
}

} // namespace

std::string WriteSwitchesTsv(const timed_result& result, const MouthShapes& shapes, int holdMs) {
    std::string table;
    for (const auto& each : SwitchesOf(result, shapes, holdMs)) {
        table += Seconds(each.startMs) + "\t" + each.shape + "\n";
    }
    return table + Seconds(EndOf(result)) + "\t" + shapes.GetRestName() + "\n";
}

std::string WriteSwitchesXml(const timed_result& result, const MouthShapes& shapes, int holdMs) {
    const auto switches = SwitchesOf(result, shapes, holdMs);
    std::string text = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<rhubarbResult>\n"
                       "  <metadata>\n    <soundFile>" +
                       EscapeMarkup(result.audio) + "</soundFile>\n    <duration>" +
                       Seconds(EndOf(result)) + "</duration>\n  </metadata>\n  <mouthCues>\n";
    for (size_t i = 0; i < switches.size(); ++i) {
        const int64_t endMs = i + 1 < switches.size() ? switches[i + 1].startMs : EndOf(result);
        text += "    <mouthCue start=\"" + Seconds(switches[i].startMs) + "\" end=\"" +
                Seconds(endMs) + "\">" + EscapeMarkup(switches[i].shape) + "</mouthCue>\n";
    }
    return text + "  </mouthCues>\n</rhubarbResult>\n";
}

std::string WriteSwitchesJson(const timed_result& result, const MouthShapes& shapes, int holdMs) {
    const auto switches = SwitchesOf(result, shapes, holdMs);
    const auto seconds = [](int64_t ms) { return static_cast<double>(ms) / 1000.0; };
    json cues = json::array();
    for (size_t i = 0; i < switches.size(); ++i) {
        const int64_t endMs = i + 1 < switches.size() ? switches[i + 1].startMs : EndOf(result);
        cues.push_back({{"start", seconds(switches[i].startMs)},
                        {"end", seconds(endMs)},
                        {"value", switches[i].shape}});
    }
    const json document = {
        {"metadata", {{"soundFile", result.audio}, {"duration", seconds(EndOf(result))}}},
        {"mouthCues", std::move(cues)}};
    return document.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

std::string WriteMohoSwitches(const timed_result& result, const MouthShapes& shapes, int holdMs) {
    std::string text = "MohoSwitch1\n";
    size_t frame = 0;
    for (const auto& each : SwitchesOf(result, shapes, holdMs)) {
        while (frame < result.frames.size() && result.frames[frame].startMs < each.startMs) {
            ++frame;
        }
        text += std::to_string(frame + 1) + " " + each.shape + "\n";
    }
    return text;
}
