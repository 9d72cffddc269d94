#include "results/sync_marker.h"

#include <cstring>

#include "base/allocation.h"
#include "base/flog.h"

namespace tessarin {

void ClearSyncMarker(CSyncMarker& marker) {
    flog scope("ClearSyncMarker");
    marker.type = kClearedMarker;
    marker.score = 0.0f;
    marker.start = 0;
    marker.end = 0;
    std::memset(marker.label, 0, sizeof marker.label);
    marker.text = nullptr;
    marker.text_offset = 0;
    marker.text_length = 0;
}

error_code CopySyncMarker(CSyncMarker& to, const CSyncMarker& from) {
    flog scope("CopySyncMarker");
    const char* text = from.type == kPhonemeMarker ? nullptr : from.text;
    to = from;
    to.text = nullptr;
    if (text == nullptr) {
        return kNoError;
    }
    const size_t bytes = std::strlen(text) + 1;
    to.text = static_cast<char*>(alloc(bytes, false));
    if (to.text == nullptr) {
        return kOutOfMemory;
    }
    std::memcpy(to.text, text, bytes);
    return kNoError;
}

void DeleteSyncMarker(CSyncMarker& marker) {
    flog scope("DeleteSyncMarker");
    if (marker.type != kPhonemeMarker) {
        tessarin::free(marker.text);
    }
    marker.text = nullptr;
}

} // namespace tessarin
