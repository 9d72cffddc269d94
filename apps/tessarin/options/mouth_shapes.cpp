#include "apps/tessarin/options/mouth_shapes.h"

#include <algorithm>
#include <cstring>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"

namespace {

std::vector<tessarin_frame> FlatFrames(const std::vector<mouth_frame>& frames) {
    std::vector<tessarin_frame> flat;
    for (const mouth_frame& frame : frames) {
        tessarin_frame copy{frame.startMs, frame.endMs, 0, {}};
        for (const auto& [label, weight] : frame.weights) {
            tessarin_weight& entry = copy.weights[copy.count++];
            std::strncpy(entry.label, label.c_str(), sizeof entry.label - 1);
            entry.weight = weight;
        }
        flat.push_back(copy);
    }
    return flat;
}

} // namespace

MouthShapes MouthShapes::BuiltIn(const std::string& set) {
    tessarin_shapes* made = nullptr;
    const int32_t code = tessarin_create_shapes(set.c_str(), &made);
    if (code != tessarin::kNoError) {
        throw EngineFailure("mouth shapes " + set, code);
    }
    MouthShapes shapes;
    shapes.shapes = tessarin::flat::shapes_owner(made);
    return shapes;
}

MouthShapes MouthShapes::FromFile(const std::string& path) {
    return FromText(path, ReadWholeFile(path));
}

MouthShapes MouthShapes::FromText(const std::string& name, const std::string& text) {
    tessarin_shapes* made = nullptr;
    char reason[256];
    const int32_t code =
        tessarin_create_shapes_from_text(text.c_str(), reason, sizeof reason, &made);
    if (code != tessarin::kNoError) {
        throw reason[0] != '\0' ? Failure(kExitFailed, name + ": " + reason)
                                : EngineFailure(name, code);
    }
    MouthShapes shapes;
    shapes.shapes = tessarin::flat::shapes_owner(made);
    return shapes;
}

std::string MouthShapes::GetSet() const {
    return tessarin_get_shape_set(shapes.get());
}

std::vector<std::string> MouthShapes::GetNames() const {
    std::vector<std::string> names;
    for (uint32_t i = 0; i < tessarin_get_shape_count(shapes.get()); ++i) {
        names.emplace_back(tessarin_get_shape_name(shapes.get(), i));
    }
    return names;
}

std::string MouthShapes::GetRestName() const {
    return tessarin_get_shape_name(shapes.get(), tessarin_get_rest_shape(shapes.get()));
}

std::vector<std::string> MouthShapes::GetClosedNames() const {
    std::vector<std::string> names;
    for (uint32_t i = 0; i < tessarin_get_shape_count(shapes.get()); ++i) {
        if (tessarin_is_closed_shape(shapes.get(), i) != 0) {
            names.emplace_back(tessarin_get_shape_name(shapes.get(), i));
        }
    }
    return names;
}

std::vector<std::vector<double>> MouthShapes::Mix(const std::vector<mouth_frame>& frames) const {
    std::vector<std::vector<double>> rows;
    for (const tessarin_frame& frame : FlatFrames(frames)) {
        std::vector<double>& row = rows.emplace_back(tessarin_get_shape_count(shapes.get()));
        const int32_t code = tessarin_mix_shapes(shapes.get(), &frame, 1, row.data());
        if (code != tessarin::kNoError) {
            throw EngineFailure("mouth shapes", code);
        }
    }
    return rows;
}

std::vector<MouthShapes::shape_switch>
MouthShapes::FindSwitches(const std::vector<mouth_frame>& frames, int holdMs) const {
    const std::vector<tessarin_frame> flat = FlatFrames(frames);
    tessarin::flat::switches_owner made;
    const int32_t code = tessarin_create_switches(
        shapes.get(), flat.data(), static_cast<uint32_t>(flat.size()), holdMs, tessarin::Out(made));
    if (code != tessarin::kNoError) {
        throw EngineFailure("--hold", code);
    }
    std::vector<shape_switch> switches;
    uint32_t count = 0;
    const tessarin_switch* const first = tessarin_get_switches(made.get(), &count);
    std::for_each(first, first + count, [&](const tessarin_switch& each) {
        switches.push_back({each.start_ms, tessarin_get_shape_name(shapes.get(), each.shape)});
    });
    return switches;
}
