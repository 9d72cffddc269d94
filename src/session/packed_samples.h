#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tessarin/error_codes.h"

namespace tessarin {

/// The sample of a command, as IQuibAcousticCmdCtrl gives and takes it.
struct command_sample {
    std::string name;
    std::string data;
};

/// Samples one after the other, so that they can be handed to a controller as they are; then "name"
/// and their names in the same order, each with a zero byte at its end.
std::string PackSamples(std::span<const command_sample> samples);

/// Samples without names are named by their ids. Returns 0, or 12 for bytes that are not packed
/// samples.
[[nodiscard]] error_code UnpackSamples(std::string_view packed, std::vector<command_sample>& out);

} // namespace tessarin
