#include "apps/tessarin/gltf/head_asset.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "apps/tessarin/gltf/head_moves.h"
#include "apps/tessarin/gltf/head_parts.h"
#include "tessarin/tessarin_c.h"

namespace {

using json = GltfDocument::json;

/// A look that the head has, as weights of blend shapes.
using look = std::vector<std::pair<std::string, double>>;

struct material_look {
    const char* name;
    std::array<double, 3> colour; ///< linear
    double roughness;
};

/// In the order of head_material.
constexpr material_look kMaterials[] = {
    {"skin", {0.72, 0.43, 0.31}, 0.65},  {"lips", {0.52, 0.16, 0.14}, 0.45},
    {"mouth", {0.12, 0.02, 0.02}, 0.8},  {"teeth", {0.85, 0.83, 0.76}, 0.3},
    {"tongue", {0.50, 0.15, 0.15}, 0.5}, {"white", {0.85, 0.85, 0.84}, 0.2},
    {"iris", {0.03, 0.05, 0.08}, 0.1},   {"hair", {0.04, 0.025, 0.02}, 0.7},
};

/// Blend shapes move the head by themselves. A shape of another set looks like the phoneme that
/// shows most of it.
look LookOf(const std::string& name, size_t shape, const MouthShapes& shapes) {
    const MouthShapes arkit = MouthShapes::BuiltIn("arkit");
    const std::vector<std::string> blendShapes = arkit.GetNames();
    if (std::ranges::find(blendShapes, name) != blendShapes.end()) {
        return {{name, 1.0}};
    }
    double most = 0;
    look found;
    for (uint32_t i = 0; tessarin_get_phoneme_label(i) != nullptr; ++i) {
        const std::vector<mouth_frame> frame = {{0, 1, {{tessarin_get_phoneme_label(i), 1.0f}}}};
        const double weight = shapes.Mix(frame).front()[shape];
        if (weight <= most) {
            continue;
        }
        most = weight;
        found.clear();
        const std::vector<double> weights = arkit.Mix(frame).front();
        for (size_t k = 0; k < weights.size(); ++k) {
            if (weights[k] > 0) {
                found.emplace_back(blendShapes[k], weights[k]);
            }
        }
    }
    return found;
}

std::vector<float> MovesOf(const head_part& part, const look& wanted) {
    std::vector<float> moves;
    for (const head_vertex& vertex : part.vertices) {
        head_vector sum{};
        for (const auto& [name, weight] : wanted) {
            const head_vector move = MoveOf(vertex, name);
            for (size_t i = 0; i < 3; ++i) {
                sum[i] += weight * move[i];
            }
        }
        moves.insert(moves.end(), sum.begin(), sum.end());
    }
    return moves;
}

json AddPart(const head_part& part, const std::vector<look>& looks, GltfDocument* asset) {
    std::vector<float> places;
    std::vector<float> normals;
    for (const head_vertex& vertex : part.vertices) {
        places.insert(places.end(), vertex.place.begin(), vertex.place.end());
    }
    for (const head_vector& normal : NormalsOf(part)) {
        normals.insert(normals.end(), normal.begin(), normal.end());
    }
    json primitive = {{"attributes",
                       {{"POSITION", asset->AddVectors(places, true)},
                        {"NORMAL", asset->AddVectors(normals, true)}}},
                      {"indices", asset->AddIndices(part.triangles)},
                      {"material", static_cast<int>(part.material)},
                      {"targets", json::array()}};
    size_t still = 0; // the accessor that all targets share which do not move this part
    for (const look& each : looks) {
        const std::vector<float> moves = MovesOf(part, each);
        const bool moved = std::ranges::any_of(moves, [](float x) { return x != 0.0f; });
        if (moved || still == 0) {
            const size_t accessor = asset->AddVectors(moves, true);
            still = moved ? still : accessor;
            primitive["targets"].push_back({{"POSITION", accessor}});
        } else {
            primitive["targets"].push_back({{"POSITION", still}});
        }
    }
    return primitive;
}

json MaterialsJson() {
    json materials = json::array();
    for (const material_look& each : kMaterials) {
        materials.push_back(
            {{"name", each.name},
             {"pbrMetallicRoughness",
              {{"baseColorFactor", {each.colour[0], each.colour[1], each.colour[2], 1.0}},
               {"metallicFactor", 0.0},
               {"roughnessFactor", each.roughness}}},
             {"doubleSided", true}});
    }
    return materials;
}

} // namespace

GltfDocument MakeHeadAsset(const MouthShapes& shapes) {
    const std::vector<std::string> names = shapes.GetNames();
    std::vector<look> looks;
    for (size_t i = 0; i < names.size(); ++i) {
        looks.push_back(LookOf(names[i], i, shapes));
    }
    GltfDocument asset;
    json primitives = json::array();
    for (const head_part& part : MakeHeadParts()) {
        primitives.push_back(AddPart(part, looks, &asset));
    }
    asset.GetRoot()["materials"] = MaterialsJson();
    asset.Array("meshes").push_back({{"name", "head"},
                                     {"primitives", std::move(primitives)},
                                     {"weights", std::vector<double>(names.size())},
                                     {"extras", {{"targetNames", names}}}});
    asset.Array("nodes").push_back({{"name", "head"}, {"mesh", 0}});
    asset.Array("scenes").push_back({{"nodes", json::array({0})}});
    asset.GetRoot()["scene"] = 0;
    return asset;
}
