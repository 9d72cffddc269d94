#pragma once

#include <memory>
#include <string>
#include <vector>

#include "apps/tessarin/gltf/gltf_document.h"
#include "apps/tessarin/gltf/morph_targets.h"
#include "apps/tessarin/options/mouth_shapes.h"

/// A user's asset, and those of its meshes that the shapes of a set move.
struct speaking_asset {
    GltfDocument document;
    std::vector<mesh_targets> meshes;
};

/// Opens an asset, and chooses the map whose shapes have the most targets there, the first of
/// several. Throws Failure, also when no target is called after a shape.
std::shared_ptr<const speaking_asset> OpenSpeakingAsset(const std::string& path,
                                                        const std::vector<MouthShapes>& maps,
                                                        MouthShapes* chosen);
