#pragma once

#include <cstdint>
#include <string_view>

namespace tessarin {

/// The score of a sound of amplitude `raw` (0 to 100) that lasts `durationMs`, on the logarithmic
/// scale that the articulator expects. A sonorant that is audible at all scores by its length as
/// much as by its level, and at least 65, so that the mouth opens for it.
float MapScore(float raw, std::string_view label, int64_t durationMs);

} // namespace tessarin
