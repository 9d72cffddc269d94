#pragma once

#include <cstddef>
#include <string>

#include <nlohmann/json.hpp>

/// The two parts of a binary glTF file; a file of text has no binary part.
struct glb_chunks {
    std::string text;
    std::string binary;
    bool hasBinary = false;
};

/// Reads a .glb, which .vrm files are too, or a .gltf. Throws Failure.
glb_chunks ReadGlbChunks(const std::string& path);

/// A .glb of both. The binary chunk is left out when it would be empty.
std::string JoinGlbChunks(std::string text, const std::string& binary);

/// The JSON of an asset: an object of version 2, not nested too deeply, whose lists that are used
/// here are lists of objects. Throws Failure, which names the file.
nlohmann::ordered_json ParseGltfJson(const std::string& path, const std::string& text);

/// A size or an index in an object of the file `path`. Throws Failure where it is not one.
size_t GltfSize(const std::string& path, const nlohmann::ordered_json& object, const char* name);
