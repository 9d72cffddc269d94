#include <cstdio>
#include <set>

#include "apps/tessarin/writers/output_formats.h"
#include "apps/tessarin/writers/phoneme_symbols.h"

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

std::string WriteCurvesCsv(const timed_result& result, uint32_t alphabet) {
    std::set<std::string> labels;
    for (const mouth_frame& frame : result.frames) {
        for (const auto& [label, weight] : frame.weights) {
            labels.insert(label);
        }
    }
    std::vector<std::string> columns;
    for (const std::string& label : labels) {
        columns.push_back(SymbolOf(label, alphabet));
    }
    std::string table = Header(columns);
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

std::string WriteShapesCsv(const timed_result& result, const MouthShapes& shapes) {
    std::string table = Header(shapes.GetNames());
    const std::vector<std::vector<double>> mixed = shapes.Mix(result.frames);
    for (size_t i = 0; i < mixed.size(); ++i) {
        table += std::to_string(result.frames[i].startMs);
        for (const double weight : mixed[i]) {
            table += "," + Weight(weight);
        }
        table += "\n";
    }
    return table;
}
