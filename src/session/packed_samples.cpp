#include "session/packed_samples.h"

#include "base/byte_cursor.h"

namespace tessarin {

namespace {

constexpr std::string_view kNamesMark = "name"; // a sample begins with its version, 0
constexpr size_t kHeaderSize = 20;

/// Takes a sample off the front: its version, its id, the counts of its observations, of their
/// features and of their values, and the values.
bool TakeSample(ByteCursor& cursor, command_sample& sample) {
    const auto* const first = reinterpret_cast<const char*>(cursor.Position());
    cursor.Skip(4);
    const uint32_t id = cursor.ReadU32();
    const uint64_t observations = cursor.ReadU32();
    cursor.Skip(4);
    const uint64_t values = observations * cursor.ReadU32();
    if (!cursor.Holds(values, sizeof(float))) {
        return false;
    }
    const auto size = static_cast<size_t>(values) * sizeof(float);
    cursor.Skip(size);
    sample = {std::to_string(id), std::string(first, kHeaderSize + size)};
    return true;
}

bool IsAtNames(const ByteCursor& cursor) {
    return std::string_view(reinterpret_cast<const char*>(cursor.Position()), cursor.Remaining())
        .starts_with(kNamesMark);
}

} // namespace

std::string PackSamples(std::span<const command_sample> samples) {
    std::string packed;
    for (const command_sample& sample : samples) {
        packed += sample.data;
    }
    packed += kNamesMark;
    for (const command_sample& sample : samples) {
        packed += sample.name;
        packed += '\0';
    }
    return packed;
}

error_code UnpackSamples(std::string_view packed, std::vector<command_sample>& out) {
    ByteCursor cursor(packed.data(), packed.size());
    std::vector<command_sample> samples;
    while (cursor.Remaining() > 0 && !IsAtNames(cursor)) {
        if (!TakeSample(cursor, samples.emplace_back())) {
            return kInvalidFile;
        }
    }
    if (cursor.Remaining() > 0) {
        cursor.Skip(kNamesMark.size());
        for (command_sample& sample : samples) {
            sample.name = cursor.ReadString();
        }
        if (cursor.Failed() || cursor.Remaining() > 0) {
            return kInvalidFile;
        }
    }
    if (samples.empty()) {
        return kInvalidFile;
    }
    out = std::move(samples);
    return kNoError;
}

} // namespace tessarin
