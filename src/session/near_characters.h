#pragma once

#include <optional>
#include <string_view>

namespace tessarin {

/// What to say for a character that a code page lacks: the letter without its accent, a plain
/// quote, dash or blank; empty for what is not seen, such as a combining accent. Nothing when
/// there is nothing near. A zero stands after the text.
std::optional<std::string_view> FindNearCharacters(char32_t character);

} // namespace tessarin
