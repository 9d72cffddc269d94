#pragma once

#include "tessarin/error_codes.h"
#include "tessarin/sync_results.h"

namespace tessarin {

/// Makes `marker` an empty record of type kClearedMarker. Releases nothing, so that it also serves
/// on a record that was never set.
void ClearSyncMarker(CSyncMarker& marker);

/// Makes `to` a copy of `from` with a text of its own; a phoneme's copy has none. What `to` held is
/// not released. Without memory for the text returns kOutOfMemory, and `to` has none.
error_code CopySyncMarker(CSyncMarker& to, const CSyncMarker& from);

/// Releases the text that `marker` owns and forgets it. A phoneme's text belongs to somebody else.
void DeleteSyncMarker(CSyncMarker& marker);

} // namespace tessarin
