#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "apps/tessarin/gltf/gltf_document.h"

/// The morph targets of a mesh by the shapes of a set.
struct mesh_targets {
    std::vector<size_t> nodes;                 ///< that show the mesh
    std::vector<std::optional<size_t>> shapes; ///< of each target, the number of its shape
    std::vector<float> rest;                   ///< weight of each target when nothing moves it
};

/// The meshes of an asset with a target that is called after one of `shapes`. Names are compared
/// without their case, with `_L` and `_R` for Left and Right, and without what stands before a dot
/// or a colon and prefixes such as `viseme_`. Throws Failure for an asset that contradicts itself.
std::vector<mesh_targets> FindMorphTargets(const std::string& path, const GltfDocument& asset,
                                           const std::vector<std::string>& shapes);

/// How many of the shapes have a target.
size_t CountShapes(const std::vector<mesh_targets>& meshes);

/// The names of all targets of an asset, each once, for people.
std::vector<std::string> TargetNames(const GltfDocument& asset);

/// Weights of shapes over time: a row for each time.
struct shape_rows {
    std::vector<int32_t> timesMs;
    std::vector<std::vector<double>> weights;
};

/// Adds an animation of the weights of `meshes`, in place of one of this name that an earlier run
/// has added. The targets of a mesh share their keys, as the format wants it.
void AddMorphAnimation(const std::string& name, const std::vector<mesh_targets>& meshes,
                       const shape_rows& rows, double tolerance, GltfDocument* asset);

/// An animation without channels.
GltfDocument::json MakeAnimation(const std::string& name);

/// Adds an animation, in place of the one of its name that an earlier run has added.
void PutAnimation(GltfDocument::json animation, GltfDocument* asset);

/// Adds a sampler of keys at `timesMs` for a node's path, and its channel.
void AddChannel(size_t node, const char* path, size_t times, size_t values,
                GltfDocument::json* animation);

/// Times in seconds, as an accessor.
size_t AddTimes(const std::vector<int32_t>& timesMs, GltfDocument* asset);
