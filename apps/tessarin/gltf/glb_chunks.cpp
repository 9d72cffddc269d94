#include "apps/tessarin/gltf/glb_chunks.h"

#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"

namespace {

using json = nlohmann::ordered_json;

constexpr uint32_t kMagic = 0x46546C67;  // glTF
constexpr uint32_t kText = 0x4E4F534A;   // JSON
constexpr uint32_t kBinary = 0x004E4942; // BIN
constexpr size_t kFileHead = 12;
constexpr size_t kChunkHead = 8;

/// More would exhaust the stack when it is written again.
constexpr int kMaxDepth = 128;

/// Members are looked up one by one to keep their order, so many of them take long.
constexpr size_t kMaxMembers = 2000;

uint32_t NumberAt(const std::string& bytes, size_t place) {
    uint32_t number = 0;
    std::memcpy(&number, bytes.data() + place, sizeof number);
    return number;
}

void Append(uint32_t number, std::string* out) {
    char bytes[sizeof number];
    std::memcpy(bytes, &number, sizeof number);
    out->append(bytes, sizeof bytes);
}

Failure Broken(const std::string& path, const std::string& what) {
    return {kExitFailed, path + ": is not a glTF 2.0 file: " + what};
}

/// The chunk at `*place`, which then is at the next one.
std::string TakeChunk(const std::string& path, const std::string& bytes, uint32_t* type,
                      size_t* place) {
    if (bytes.size() - *place < kChunkHead) {
        throw Broken(path, "it is cut short");
    }
    const uint32_t length = NumberAt(bytes, *place);
    *type = NumberAt(bytes, *place + 4);
    *place += kChunkHead;
    if (length > bytes.size() - *place) {
        throw Broken(path, "it is cut short");
    }
    const std::string chunk = bytes.substr(*place, length);
    *place += length;
    return chunk;
}

} // namespace

glb_chunks ReadGlbChunks(const std::string& path) {
    const std::string bytes = ReadWholeFile(path);
    glb_chunks chunks;
    if (bytes.size() < kFileHead || NumberAt(bytes, 0) != kMagic) {
        chunks.text = bytes;
        return chunks;
    }
    if (NumberAt(bytes, 4) != 2) {
        throw Broken(path, "its version is " + std::to_string(NumberAt(bytes, 4)));
    }
    size_t place = kFileHead;
    uint32_t type = 0;
    chunks.text = TakeChunk(path, bytes, &type, &place);
    if (type != kText) {
        throw Broken(path, "it does not begin with its JSON");
    }
    if (place < bytes.size()) {
        chunks.binary = TakeChunk(path, bytes, &type, &place);
        chunks.hasBinary = type == kBinary;
    }
    return chunks;
}

std::string JoinGlbChunks(std::string text, const std::string& binary) {
    text.resize((text.size() + 3) / 4 * 4, ' ');
    const size_t length =
        kFileHead + kChunkHead + text.size() + (binary.empty() ? 0 : kChunkHead + binary.size());
    if (length > std::numeric_limits<uint32_t>::max()) {
        throw Failure(kExitFailed, "glTF: a file of more than 4 GB cannot be written");
    }
    std::string glb;
    for (const uint32_t number :
         {kMagic, 2u, static_cast<uint32_t>(length), static_cast<uint32_t>(text.size()), kText}) {
        Append(number, &glb);
    }
    glb += text;
    if (!binary.empty()) {
        Append(static_cast<uint32_t>(binary.size()), &glb);
        Append(kBinary, &glb);
        glb += binary;
    }
    return glb;
}

json ParseGltfJson(const std::string& path, const std::string& text) {
    json root;
    std::vector<size_t> members(kMaxDepth + 2); // of the object that is open at each depth
    try {
        root = json::parse(text, [&](int depth, json::parse_event_t event, json&) {
            if (depth > kMaxDepth) {
                throw Broken(path, "its JSON is nested too deeply");
            }
            const auto level = static_cast<size_t>(depth);
            if (event == json::parse_event_t::object_start) {
                members[level + 1] = 0;
            } else if (event == json::parse_event_t::key && ++members[level] > kMaxMembers) {
                throw Broken(path, "one object of its JSON has too many members");
            }
            return true;
        });
    } catch (const json::exception&) {
        throw Broken(path, "its JSON cannot be read");
    }
    const auto asset = root.is_object() ? root.find("asset") : root.end();
    const bool isTwo = root.is_object() && asset != root.end() && asset->is_object() &&
                       asset->contains("version") && (*asset)["version"].is_string() &&
                       (*asset)["version"].get_ref<const std::string&>().starts_with("2.");
    if (!isTwo) {
        throw Broken(path, "there is no asset of version 2");
    }
    for (const char* name :
         {"accessors", "animations", "buffers", "bufferViews", "images", "meshes", "nodes"}) {
        const auto list = root.find(name);
        if (list == root.end()) {
            continue;
        }
        if (!list->is_array()) {
            throw Broken(path, std::string(name) + " is not a list");
        }
        for (const json& item : *list) {
            if (!item.is_object()) {
                throw Broken(path, std::string(name) + " has what is not an object");
            }
        }
    }
    return root;
}

size_t GltfSize(const std::string& path, const json& object, const char* name) {
    const auto found = object.find(name);
    if (found == object.end() || !found->is_number_integer() || *found < 0) {
        throw Broken(path, std::string(name) + " is missing or is not a whole number");
    }
    return found->get<size_t>();
}
