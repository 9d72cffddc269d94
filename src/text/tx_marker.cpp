#include "text/tx_marker.h"

#include "base/allocation.h"

#include <algorithm>
#include <new>

namespace tessarin {

CTxMarker EmptyTxMarker(uint32_t textStart) {
    CTxMarker marker = {};
    marker.text_start = textStart;
    marker.kind = kWordToken;
    marker.value = -1;
    return marker;
}

void StoreGroups(CTxMarker& marker, std::span<const PronunciationBuilder::group> groups) {
    marker.group_count = static_cast<int32_t>(groups.size());
    if (groups.empty()) {
        return;
    }
    size_t numPointers = 0;
    size_t numCharacters = 0;
    for (const PronunciationBuilder::group& group : groups) {
        numPointers += group.size();
        for (const std::string& alternative : group) {
            numCharacters += alternative.size() + 1;
        }
    }
    void* block = alloc(
        groups.size() * sizeof(PhonemeGroup) + numPointers * sizeof(char*) + numCharacters, false);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    auto* record = static_cast<PhonemeGroup*>(block);
    auto* pointer = reinterpret_cast<char**>(record + groups.size());
    auto* character = reinterpret_cast<char*>(pointer + numPointers);
    marker.groups = record;
    for (const PronunciationBuilder::group& group : groups) {
        *record++ = {static_cast<int32_t>(group.size()), pointer};
        for (const std::string& alternative : group) {
            *pointer++ = character;
            character = std::copy_n(alternative.c_str(), alternative.size() + 1, character);
        }
    }
}

void ReleaseGroups(CTxMarker& marker) {
    tessarin::free(marker.groups);
    marker.groups = nullptr;
    marker.group_count = 0;
}

} // namespace tessarin
