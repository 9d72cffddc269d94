#pragma once

#include <string_view>

namespace tessarin {

/// The order of a sorted lexicon: by bytes, without regard to the case of ASCII letters, a word
/// before all that it begins. Words that are the same are not below each other.
bool IsWordBelow(std::string_view first, std::string_view second);

} // namespace tessarin
