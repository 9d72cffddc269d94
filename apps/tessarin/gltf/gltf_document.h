#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

/// A glTF 2.0 asset that is being made or added to: its JSON, and the bytes of the buffer that what
/// is added goes to.
class GltfDocument {
public:
    using json = nlohmann::ordered_json;

    /// An empty asset, with this tool as its generator.
    GltfDocument();
    /// A user's .glb, .vrm or .gltf, of which every index and size that is used here has been
    /// checked. Throws Failure, which names the file.
    static GltfDocument FromFile(const std::string& path);

    json& GetRoot() { return root; }
    const json& GetRoot() const { return root; }
    /// The array of this name, made if it is not there.
    json& Array(const char* name);

    /// Each returns the number of the new accessor. Positions of vertices and times of keys have a
    /// range, of three columns or of one.
    size_t AddScalars(std::span<const float> values, bool hasRange);
    size_t AddVectors(std::span<const float> values, bool areVertices);
    size_t AddIndices(std::span<const uint16_t> values);

    /// Whether the asset names other files, which stay where they are.
    bool HasOtherFiles() const;

    /// One binary file, or one of text with the buffer inside.
    std::string WriteGlb() const;
    std::string WriteGltf() const;

private:
    size_t AddAccessor(std::string_view bytes, size_t count, int component, const char* type,
                       int target);

    json root;
    size_t ownBuffer = 0; ///< number of the buffer of `binary`, which may not be there yet
    std::string binary;
};
