#include "apps/tessarin/writers/cue_output.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <vector>

#include "apps/tessarin/writers/output_formats.h"
#include "tessarin/tessarin_c.h"

namespace {

const std::map<std::string, std::string> kPrestonBlair = {
    {"A", "MBP"}, {"B", "etc"}, {"C", "E"}, {"D", "AI"},  {"E", "O"},
    {"F", "U"},   {"G", "FV"},  {"H", "L"}, {"X", "rest"}};

/// The drawing that stands for one which the character may not have.
std::string DrawnAs(const std::string& shape, const cue_style& style) {
    const bool isThere =
        shape < "G" || style.extended.find(shape) != std::string::npos; // A to F always are
    const std::string drawn = isThere ? shape : shape == "H" ? "C" : "A";
    return style.hasPrestonBlairNames ? kPrestonBlair.at(drawn) : drawn;
}

} // namespace

MouthShapes ShapesForCues(const cue_style& style) {
    const MouthShapes all = MouthShapes::BuiltIn("switches");
    const std::vector<std::string> names = all.GetNames();
    std::vector<std::string> drawn;
    for (const std::string& name : names) {
        if (std::ranges::find(drawn, DrawnAs(name, style)) == drawn.end()) {
            drawn.push_back(DrawnAs(name, style));
        }
    }
    std::string text = "set switches\nshapes";
    for (const std::string& name : drawn) {
        text += " " + name;
    }
    text += "\nclosed " + DrawnAs("A", style) + "\nrest " + DrawnAs("X", style) + "\n";
    for (uint32_t i = 0; tessarin_get_phoneme_label(i) != nullptr; ++i) {
        const std::string label = tessarin_get_phoneme_label(i);
        const std::vector<double> weights = all.Mix({{0, 1, {{label, 1.0f}}}}).front();
        text += label;
        for (size_t k = 0; k < weights.size(); ++k) {
            if (weights[k] > 0) {
                text += " " + DrawnAs(names[k], style) + " " + std::to_string(weights[k]);
            }
        }
        text += "\n";
    }
    return MouthShapes::FromText("mouth shapes", text);
}

std::string WriteCues(const timed_result& result, const cue_style& style) {
    const MouthShapes shapes = ShapesForCues(style);
    if (style.format == "xml") {
        return WriteSwitchesXml(result, shapes, 0);
    }
    if (style.format == "json") {
        return WriteSwitchesJson(result, shapes, 0);
    }
    if (style.format == "dat") {
        // The mouth rests when the recording ends.
        return WriteMohoSwitches(result, shapes, 0) + std::to_string(result.frames.size() + 1) +
               " " + shapes.GetRestName() + "\n";
    }
    return WriteSwitchesTsv(result, shapes, 0);
}
