#include "apps/tessarin/gltf/morph_targets.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <set>
#include <string_view>
#include <utility>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/gltf/glb_chunks.h"
#include "apps/tessarin/writers/reduced_keys.h"

namespace {

using json = GltfDocument::json;

constexpr const char* kGenerator = "tessarin";

/// What people put before the name of a mouth shape.
constexpr std::array<std::string_view, 6> kPrefixes = {"viseme_", "vis_",   "v_",
                                                       "mouth_",  "blend_", "shape_"};

std::string Lower(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

/// The name of a target as a shape would be called.
std::string ShapeName(const std::string& target) {
    std::string name = Lower(target.substr(target.find_last_of(".:") + 1));
    for (const std::string_view prefix : kPrefixes) {
        if (name.starts_with(prefix)) {
            name.erase(0, prefix.size());
            break;
        }
    }
    for (const auto& [ending, side] : {std::pair("_l", "left"), std::pair("_r", "right")}) {
        if (name.ends_with(ending)) {
            name.replace(name.size() - 2, 2, side);
        }
    }
    return name;
}

const json* Member(const json& object, const char* name) {
    const auto found = object.is_object() ? object.find(name) : object.end();
    return object.is_object() && found != object.end() ? &*found : nullptr;
}

const json& List(const json& object, const char* name) {
    static const json kEmpty = json::array();
    const json* const found = Member(object, name);
    return found != nullptr && found->is_array() ? *found : kEmpty;
}

size_t CountTargets(const json& mesh) {
    const json& primitives = List(mesh, "primitives");
    return primitives.empty() ? 0 : List(primitives[0], "targets").size();
}

/// The names stand in the extras of the mesh, in some files in those of its first primitive.
std::vector<std::string> NamesOf(const json& mesh) {
    std::vector<std::string> names;
    const json& primitives = List(mesh, "primitives");
    const json* extras = Member(mesh, "extras");
    if ((extras == nullptr || List(*extras, "targetNames").empty()) && !primitives.empty()) {
        extras = Member(primitives[0], "extras");
    }
    if (extras != nullptr) {
        for (const json& name : List(*extras, "targetNames")) {
            names.push_back(name.is_string() ? name.get<std::string>() : "");
        }
    }
    names.resize(std::min(names.size(), CountTargets(mesh)));
    return names;
}

/// For each target its shape; a shape that several are called after moves the first, and one of
/// exactly its name before others.
std::vector<std::optional<size_t>> ShapesOf(const std::vector<std::string>& targets,
                                            const std::vector<std::string>& shapes) {
    std::vector<std::optional<size_t>> found(targets.size());
    for (size_t shape = 0; shape < shapes.size(); ++shape) {
        const std::string wanted = Lower(shapes[shape]);
        auto target = std::ranges::find(targets, shapes[shape]);
        if (target == targets.end()) {
            target = std::ranges::find_if(targets, [&](const std::string& name) {
                return Lower(name) == wanted || ShapeName(name) == wanted;
            });
        }
        if (target != targets.end()) {
            found[static_cast<size_t>(target - targets.begin())] = shape;
        }
    }
    return found;
}

std::vector<float> RestOf(const json& mesh, const json* node, size_t count) {
    std::vector<float> rest(count);
    for (const json* owner : {&mesh, node}) {
        const json& weights = owner != nullptr ? List(*owner, "weights") : List(mesh, "");
        for (size_t i = 0; i < std::min(count, weights.size()); ++i) {
            const float weight = weights[i].is_number() ? weights[i].get<float>() : 0.0f;
            rest[i] = std::isfinite(weight) ? weight : 0.0f;
        }
    }
    return rest;
}

} // namespace

std::vector<mesh_targets> FindMorphTargets(const std::string& path, const GltfDocument& asset,
                                           const std::vector<std::string>& shapes) {
    const json& meshes = List(asset.GetRoot(), "meshes");
    const json& nodes = List(asset.GetRoot(), "nodes");
    std::vector<std::vector<size_t>> shownBy(meshes.size());
    for (size_t node = 0; node < nodes.size(); ++node) {
        if (nodes[node].contains("mesh")) {
            const size_t mesh = GltfSize(path, nodes[node], "mesh");
            if (mesh >= meshes.size()) {
                throw Failure(kExitFailed, path + ": node " + std::to_string(node) +
                                               " has a mesh that is not there");
            }
            shownBy[mesh].push_back(node);
        }
    }
    std::vector<mesh_targets> found;
    for (size_t i = 0; i < meshes.size(); ++i) {
        mesh_targets targets;
        targets.shapes = ShapesOf(NamesOf(meshes[i]), shapes);
        const bool isNamed =
            std::ranges::any_of(targets.shapes, [](const auto& each) { return each.has_value(); });
        if (!isNamed || shownBy[i].empty()) {
            continue;
        }
        const size_t count = CountTargets(meshes[i]);
        targets.shapes.resize(count);
        targets.nodes = std::move(shownBy[i]);
        targets.rest = RestOf(meshes[i], &nodes[targets.nodes.front()], count);
        found.push_back(std::move(targets));
    }
    return found;
}

size_t CountShapes(const std::vector<mesh_targets>& meshes) {
    std::set<size_t> shapes;
    for (const mesh_targets& mesh : meshes) {
        for (const auto& shape : mesh.shapes) {
            if (shape) {
                shapes.insert(*shape);
            }
        }
    }
    return shapes.size();
}

std::vector<std::string> TargetNames(const GltfDocument& asset) {
    std::vector<std::string> names;
    for (const json& mesh : List(asset.GetRoot(), "meshes")) {
        for (const std::string& name : NamesOf(mesh)) {
            if (std::ranges::find(names, name) == names.end()) {
                names.push_back(name);
            }
        }
    }
    return names;
}

json MakeAnimation(const std::string& name) {
    return {{"name", name},
            {"samplers", json::array()},
            {"channels", json::array()},
            {"extras", {{"generator", kGenerator}}}};
}

void PutAnimation(json animation, GltfDocument* asset) {
    json& animations = asset->Array("animations");
    const auto own = std::ranges::find_if(animations, [&](const json& each) {
        const json* const extras = Member(each, "extras");
        const json* const generator = extras != nullptr ? Member(*extras, "generator") : nullptr;
        const json* const called = Member(each, "name");
        return generator != nullptr && *generator == kGenerator && called != nullptr &&
               *called == animation["name"];
    });
    if (own != animations.end()) {
        *own = std::move(animation);
    } else {
        animations.push_back(std::move(animation));
    }
}

void AddChannel(size_t node, const char* path, size_t times, size_t values, json* animation) {
    json& samplers = (*animation)["samplers"];
    samplers.push_back({{"input", times}, {"output", values}, {"interpolation", "LINEAR"}});
    (*animation)["channels"].push_back(
        {{"sampler", samplers.size() - 1}, {"target", {{"node", node}, {"path", path}}}});
}

size_t AddTimes(const std::vector<int32_t>& timesMs, GltfDocument* asset) {
    std::vector<float> seconds;
    for (const int32_t ms : timesMs) {
        seconds.push_back(static_cast<float>(ms) / 1000.0f);
    }
    return asset->AddScalars(seconds, true);
}

void AddMorphAnimation(const std::string& name, const std::vector<mesh_targets>& meshes,
                       const shape_rows& rows, double tolerance, GltfDocument* asset) {
    json animation = MakeAnimation(name);
    for (const mesh_targets& mesh : meshes) {
        std::vector<std::vector<double>> shown;
        for (const std::vector<double>& weights : rows.weights) {
            std::vector<double>& row = shown.emplace_back(mesh.rest.begin(), mesh.rest.end());
            for (size_t i = 0; i < row.size(); ++i) {
                row[i] = mesh.shapes[i] ? weights[*mesh.shapes[i]] : row[i];
            }
        }
        std::vector<int32_t> timesMs;
        std::vector<float> values;
        for (const uint32_t key : ReduceKeys(rows.timesMs, shown, tolerance)) {
            timesMs.push_back(rows.timesMs[key]);
            values.insert(values.end(), shown[key].begin(), shown[key].end());
        }
        const size_t input = AddTimes(timesMs, asset);
        const size_t output = asset->AddScalars(values, false);
        for (const size_t node : mesh.nodes) {
            AddChannel(node, "weights", input, output, &animation);
        }
    }
    PutAnimation(std::move(animation), asset);
}
