#pragma once

#include <string_view>

namespace tessarin {

/// The rule text for English speech that an articulator uses until it is given another.
extern const std::string_view kDefaultRules;

} // namespace tessarin
