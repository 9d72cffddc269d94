#include "apps/tessarin/gltf/speaking_asset.h"

#include <algorithm>
#include <utility>

#include "apps/tessarin/console/failure.h"

namespace {

std::string Listed(const std::vector<std::string>& names) {
    constexpr size_t kShown = 12;
    std::string list;
    for (size_t i = 0; i < std::min(names.size(), kShown); ++i) {
        list += (i > 0 ? ", " : "") + names[i];
    }
    return list + (names.size() > kShown ? ", ..." : "");
}

Failure NothingSpeaks(const std::string& path, const GltfDocument& document,
                      const std::vector<MouthShapes>& maps) {
    const std::vector<std::string> targets = TargetNames(document);
    if (targets.empty()) {
        return {kExitFailed, path + ": has no morph targets with names; export the shape keys of "
                                    "the model with it"};
    }
    std::vector<std::string> sets;
    for (const MouthShapes& shapes : maps) {
        sets.push_back(shapes.GetSet());
    }
    return {kExitFailed, path + ": none of its morph targets (" + Listed(targets) +
                             ") is called after a shape of " + Listed(sets) +
                             "; rename them, or give a map of your own names with --shapes"};
}

} // namespace

std::shared_ptr<const speaking_asset> OpenSpeakingAsset(const std::string& path,
                                                        const std::vector<MouthShapes>& maps,
                                                        MouthShapes* chosen) {
    auto asset = std::make_shared<speaking_asset>();
    asset->document = GltfDocument::FromFile(path);
    size_t most = 0;
    for (const MouthShapes& shapes : maps) {
        std::vector<mesh_targets> meshes =
            FindMorphTargets(path, asset->document, shapes.GetNames());
        if (CountShapes(meshes) > most) {
            most = CountShapes(meshes);
            asset->meshes = std::move(meshes);
            *chosen = shapes;
        }
    }
    if (most == 0) {
        throw NothingSpeaks(path, asset->document, maps);
    }
    return asset;
}
