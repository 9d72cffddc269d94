#pragma once

#include "apps/tessarin/gltf/gltf_document.h"
#include "apps/tessarin/options/mouth_shapes.h"

/// A simple head as an asset of its own, one mesh with a morph target for each shape of a set.
GltfDocument MakeHeadAsset(const MouthShapes& shapes);
