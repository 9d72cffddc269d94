#pragma once

#include <cstdint>
#include <span>

#include "base/tarray.h"
#include "tessarin/error_codes.h"
#include "tessarin/sync_results.h"

namespace tessarin {

struct CTxMarker;

/// Appends a region's phones and the spans of its text to `results`: each span stands before the
/// phone at which it starts. `phones` have their search position in `text_offset` and times from
/// the region's begin, which is at `offsetMs`; they are moved there. `text` may be null, which
/// leaves the spans without texts. Without `keepPhonemes` only the spans and state segments go
/// over. Returns 1 when memory ends; what was appended stays.
[[nodiscard]] error_code EmitRegionMarkers(TArray<CSyncMarker>& results,
                                           TArray<CSyncMarker>& phones, int32_t offsetMs,
                                           std::span<const CTxMarker> markers, const char* text,
                                           int64_t textLength, bool keepPhonemes);

} // namespace tessarin
