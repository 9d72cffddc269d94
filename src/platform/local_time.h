#pragma once

#include <array>

namespace tessarin {

/// The present local time as "Www Mmm dd hh:mm:ss yyyy\n", zero-terminated; English in any locale.
std::array<char, 32> LocalTimeText();

} // namespace tessarin
