#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace tessarin {

/// Reads a tag of the form `<name attribute="value" ...>` from `position` on and leaves `position`
/// where reading stopped. False when there is no tag, or no white space behind its name. Attributes
/// that are not in double quotes are not seen.
bool ParseTagAttributes(std::string_view text, std::string& name,
                        std::map<std::string, std::string>& attributes, size_t& position);

} // namespace tessarin
