#pragma once

#include "tessarin/sync_results.h"
#include "tessarin/transcriber.h"

#include <span>

namespace tessarin {

/// Adds a timeline that is made from text alone: the words one after the other, each with its
/// phonemes, which last as long as the alphabet says. Of a choice the first alternative is taken;
/// tokens that are not words take no time.
void AddTimedMarkers(std::span<const CTxMarker> tokens, ISyncResultsCollection& results);

} // namespace tessarin
