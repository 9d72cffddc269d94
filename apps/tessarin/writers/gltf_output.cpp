#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>
#include <utility>

#include "apps/tessarin/gltf/head_asset.h"
#include "apps/tessarin/gltf/morph_targets.h"
#include "apps/tessarin/gltf/speaking_asset.h"
#include "apps/tessarin/writers/output_formats.h"
#include "apps/tessarin/writers/reduced_keys.h"

namespace {

using json = GltfDocument::json;

/// Finer steps of a weight are not seen.
constexpr double kUnseen = 0.005;

/// A track without a frame is at rest.
shape_rows RowsOf(const timed_result& result, const MouthShapes& shapes) {
    shape_rows rows;
    for (const mouth_frame& frame : result.frames) {
        rows.timesMs.push_back(frame.startMs);
    }
    rows.weights = shapes.Mix(result.frames);
    if (rows.timesMs.empty()) {
        rows.timesMs.push_back(0);
        rows.weights.emplace_back(shapes.GetNames().size());
    }
    return rows;
}

/// The recording's, by which a user finds the animation among others.
std::string NameOf(const timed_result& result) {
    const std::string stem = std::filesystem::path(result.audio).stem().string();
    return stem.empty() || stem == "-" ? "speech" : stem;
}

GltfDocument MakeAsset(const timed_result& result, const write_settings& settings) {
    GltfDocument asset =
        settings.into != nullptr ? settings.into->document : MakeHeadAsset(settings.shapes);
    const std::vector<mesh_targets> meshes =
        settings.into != nullptr ? settings.into->meshes
                                 : FindMorphTargets("head", asset, settings.shapes.GetNames());
    AddMorphAnimation(NameOf(result), meshes, RowsOf(result, settings.shapes),
                      settings.tolerance.value_or(kUnseen), &asset);
    return asset;
}

} // namespace

std::string WriteGlb(const timed_result& result, const write_settings& settings) {
    return MakeAsset(result, settings).WriteGlb();
}

std::string WriteGltf(const timed_result& result, const write_settings& settings) {
    return MakeAsset(result, settings).WriteGltf();
}

std::string WriteVrmAnimation(const timed_result& result, const write_settings& settings) {
    // VRMC_vrm_animation 1.0: each expression has a node, whose translation in x is its weight.
    constexpr std::array<std::string_view, 5> kPresets = {"aa", "ih", "ou", "ee", "oh"};
    const std::vector<std::string> names = settings.shapes.GetNames();
    const shape_rows rows = RowsOf(result, settings.shapes);
    GltfDocument asset;
    json expressions = json::object();
    json sceneNodes = json::array();
    for (size_t shape = 0; shape < names.size(); ++shape) {
        asset.Array("nodes").push_back({{"name", names[shape]}});
        sceneNodes.push_back(shape);
        const bool isPreset = std::ranges::find(kPresets, names[shape]) != kPresets.end();
        expressions[isPreset ? "preset" : "custom"][names[shape]]["node"] = shape;
    }
    json animation = MakeAnimation(NameOf(result));
    for (size_t shape = 0; shape < names.size(); ++shape) {
        std::vector<std::vector<double>> column;
        for (const std::vector<double>& row : rows.weights) {
            column.push_back({row[shape]});
        }
        std::vector<int32_t> timesMs;
        std::vector<float> places;
        for (const uint32_t key :
             ReduceKeys(rows.timesMs, column, settings.tolerance.value_or(kUnseen))) {
            timesMs.push_back(rows.timesMs[key]);
            places.insert(places.end(), {static_cast<float>(column[key][0]), 0.0f, 0.0f});
        }
        const size_t times = AddTimes(timesMs, &asset);
        AddChannel(shape, "translation", times, asset.AddVectors(places, false), &animation);
    }
    PutAnimation(std::move(animation), &asset);
    json& root = asset.GetRoot();
    root["scenes"] = json::array();
    root["scenes"].push_back({{"nodes", sceneNodes}});
    root["scene"] = 0;
    root["extensionsUsed"] = {"VRMC_vrm_animation"};
    root["extensions"]["VRMC_vrm_animation"] = {{"specVersion", "1.0"},
                                                {"expressions", expressions}};
    return asset.WriteGlb();
}
