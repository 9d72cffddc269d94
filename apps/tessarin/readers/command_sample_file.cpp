#include "apps/tessarin/readers/command_sample_file.h"

#include <cstdint>
#include <string_view>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"

namespace {

constexpr std::string_view kNamesMark = "name"; // a sample begins with its version, 0
constexpr size_t kHeaderSize = 20;
constexpr size_t kIdPlace = 4;
constexpr size_t kCountPlace = 8;
constexpr size_t kStridePlace = 16;

uint64_t NumberAt(std::string_view data, size_t place) {
    uint64_t number = 0;
    for (size_t i = 4; i-- > 0;) {
        number = number << 8 | static_cast<uint8_t>(data[place + i]);
    }
    return number;
}

/// Takes the data of one sample off the front of `rest`. False when they are cut short.
bool TakeSample(std::string_view& rest, command_sample* sample) {
    if (rest.size() < kHeaderSize) {
        return false;
    }
    const uint64_t floats = NumberAt(rest, kCountPlace) * NumberAt(rest, kStridePlace);
    if (floats > (rest.size() - kHeaderSize) / 4) {
        return false;
    }
    const size_t size = kHeaderSize + static_cast<size_t>(floats) * 4;
    *sample = {std::to_string(NumberAt(rest, kIdPlace)), std::string(rest.substr(0, size))};
    rest.remove_prefix(size);
    return true;
}

bool TakeName(std::string_view& rest, std::string* name) {
    const size_t end = rest.find('\0');
    if (end == std::string_view::npos) {
        return false;
    }
    *name = std::string(rest.substr(0, end));
    rest.remove_prefix(end + 1);
    return true;
}

} // namespace

std::vector<command_sample> ReadCommandSamples(const std::string& path) {
    const std::string content = ReadWholeFile(path);
    std::string_view rest = content;
    std::vector<command_sample> samples;
    bool whole = true;
    while (whole && !rest.empty() && !rest.starts_with(kNamesMark)) {
        whole = TakeSample(rest, &samples.emplace_back());
    }
    if (whole && !rest.empty()) {
        rest.remove_prefix(kNamesMark.size());
        for (command_sample& sample : samples) {
            whole = whole && TakeName(rest, &sample.name);
        }
        whole = whole && rest.empty();
    }
    if (!whole || samples.empty()) {
        throw Failure(kExitFailed, path + ": is not a file of recorded commands, or is cut short");
    }
    return samples;
}

void WriteCommandSamples(const std::string& path, const std::vector<command_sample>& samples) {
    std::string content;
    for (const command_sample& sample : samples) {
        content += sample.data;
    }
    content += kNamesMark;
    for (const command_sample& sample : samples) {
        content += sample.name;
        content += '\0';
    }
    WriteOutput(path, content);
}
