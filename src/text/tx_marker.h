#pragma once

#include "tessarin/transcriber.h"
#include "text/pronunciation/pronunciation_builder.h"

#include <span>

namespace tessarin {

/// An empty token of a word that begins at `textStart`.
CTxMarker EmptyTxMarker(uint32_t textStart);

/// Gives the marker copies of `groups`, in one block of memory that starts with the array of
/// groups. Throws std::bad_alloc.
void StoreGroups(CTxMarker& marker, std::span<const PronunciationBuilder::group> groups);

/// Frees what StoreGroups gave the marker.
void ReleaseGroups(CTxMarker& marker);

} // namespace tessarin
