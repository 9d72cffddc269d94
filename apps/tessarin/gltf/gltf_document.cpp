#include "apps/tessarin/gltf/gltf_document.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <utility>
#include <vector>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/gltf/glb_chunks.h"
#include "apps/tessarin/writers/base64.h"

namespace {

using json = GltfDocument::json;

constexpr int kFloat = 5126;
constexpr int kUnsignedShort = 5123;
constexpr int kArrayBuffer = 34962;
constexpr int kElementArrayBuffer = 34963;

static_assert(std::endian::native == std::endian::little, "buffers of glTF are little endian");

template <class T> std::string_view BytesOf(std::span<const T> values) {
    return {reinterpret_cast<const char*>(values.data()), values.size_bytes()};
}

/// The least and the greatest value of each column.
void AddRange(std::span<const float> values, size_t width, json* accessor) {
    std::vector<float> least(width, std::numeric_limits<float>::max());
    std::vector<float> greatest(width, std::numeric_limits<float>::lowest());
    for (size_t i = 0; i < values.size(); ++i) {
        least[i % width] = std::min(least[i % width], values[i]);
        greatest[i % width] = std::max(greatest[i % width], values[i]);
    }
    (*accessor)["min"] = least;
    (*accessor)["max"] = greatest;
}

bool IsOtherFile(const json& item) {
    const auto uri = item.is_object() ? item.find("uri") : item.end();
    return item.is_object() && uri != item.end() && uri->is_string() &&
           !uri->get_ref<const std::string&>().starts_with("data:");
}

} // namespace

GltfDocument::GltfDocument() : root(json::object()) {
    root["asset"] = {{"version", "2.0"}, {"generator", "tessarin " TESSARIN_VERSION}};
}

GltfDocument GltfDocument::FromFile(const std::string& path) {
    const glb_chunks chunks = ReadGlbChunks(path);
    GltfDocument document;
    document.root = ParseGltfJson(path, chunks.text);
    const json buffers = document.root.value("buffers", json::array());
    const bool hasBinary = !buffers.empty() && chunks.hasBinary && !buffers[0].contains("uri");
    document.ownBuffer = hasBinary ? 0 : buffers.size();
    if (hasBinary) {
        const size_t length = GltfSize(path, buffers[0], "byteLength");
        if (length > chunks.binary.size()) {
            throw Failure(kExitFailed, path + ": its buffer is shorter than it says");
        }
        document.binary = chunks.binary.substr(0, length);
    }
    return document;
}

json& GltfDocument::Array(const char* name) {
    if (!root.contains(name)) {
        root[name] = json::array();
    }
    return root[name];
}

size_t GltfDocument::AddAccessor(std::string_view bytes, size_t count, int component,
                                 const char* type, int target) {
    binary.resize((binary.size() + 3) / 4 * 4);
    json view = {
        {"buffer", ownBuffer}, {"byteOffset", binary.size()}, {"byteLength", bytes.size()}};
    if (target != 0) {
        view["target"] = target;
    }
    binary += bytes;
    Array("bufferViews").push_back(std::move(view));
    json& accessors = Array("accessors"); // a new member of the root moves the others
    accessors.push_back({{"bufferView", root["bufferViews"].size() - 1},
                         {"componentType", component},
                         {"count", count},
                         {"type", type}});
    return accessors.size() - 1;
}

size_t GltfDocument::AddScalars(std::span<const float> values, bool hasRange) {
    const size_t accessor = AddAccessor(BytesOf(values), values.size(), kFloat, "SCALAR", 0);
    if (hasRange) {
        AddRange(values, 1, &root["accessors"][accessor]);
    }
    return accessor;
}

size_t GltfDocument::AddVectors(std::span<const float> values, bool areVertices) {
    const size_t accessor = AddAccessor(BytesOf(values), values.size() / 3, kFloat, "VEC3",
                                        areVertices ? kArrayBuffer : 0);
    if (areVertices) {
        AddRange(values, 3, &root["accessors"][accessor]);
    }
    return accessor;
}

size_t GltfDocument::AddIndices(std::span<const uint16_t> values) {
    return AddAccessor(BytesOf(values), values.size(), kUnsignedShort, "SCALAR",
                       kElementArrayBuffer);
}

bool GltfDocument::HasOtherFiles() const {
    for (const char* list : {"buffers", "images"}) {
        const auto items = root.find(list);
        if (items != root.end() && std::ranges::any_of(*items, IsOtherFile)) {
            return true;
        }
    }
    return false;
}

std::string GltfDocument::WriteGlb() const {
    json written = root;
    std::string bytes = binary;
    bytes.resize((bytes.size() + 3) / 4 * 4);
    const bool isChunk = ownBuffer == 0;
    if (!bytes.empty()) {
        json& buffers = written["buffers"];
        buffers[ownBuffer]["byteLength"] = bytes.size();
        if (!isChunk) {
            buffers[ownBuffer]["uri"] = "data:application/octet-stream;base64," + Base64(bytes);
        }
    }
    return JoinGlbChunks(written.dump(-1, ' ', false, json::error_handler_t::replace),
                         isChunk ? bytes : "");
}

std::string GltfDocument::WriteGltf() const {
    json written = root;
    if (!binary.empty()) {
        json& buffer = written["buffers"][ownBuffer];
        buffer["byteLength"] = binary.size();
        buffer["uri"] = "data:application/octet-stream;base64," + Base64(binary);
    }
    return written.dump(1, ' ', false, json::error_handler_t::replace) + "\n";
}
