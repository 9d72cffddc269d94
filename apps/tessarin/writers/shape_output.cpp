#include <cstdio>
#include <set>

#include "apps/tessarin/writers/output_formats.h"

namespace {

std::string Weight(double weight) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.4f", weight);
    return text;
}

std::string Header(const std::vector<std::string>& columns) {
    std::string header = "time_ms";
    for (const std::string& column : columns) {
        header += "," + column;
    }
    return header + "\n";
}

} // namespace

std::string WriteCurvesCsv(const timed_result& result) {
    std::set<std::string> labels;
    for (const mouth_frame& frame : result.frames) {
        for (const auto& [label, weight] : frame.weights) {
            labels.insert(label);
        }
    }
    std::string table = Header({labels.begin(), labels.end()});
    for (const mouth_frame& frame : result.frames) {
        table += std::to_string(frame.startMs);
        for (const std::string& label : labels) {
            double shown = 0.0;
            for (const auto& [name, weight] : frame.weights) {
                shown += name == label ? static_cast<double>(weight) : 0.0;
            }
            table += "," + Weight(shown);
        }
        table += "\n";
    }
    return table;
}

std::string WriteShapesCsv(const timed_result& result, const ShapeMap& map) {
    std::string table = Header(map.GetShapes());
    for (const mouth_frame& frame : result.frames) {
        table += std::to_string(frame.startMs);
        for (const double weight : map.Mix(frame)) {
            table += "," + Weight(weight);
        }
        table += "\n";
    }
    return table;
}
