#include "text/timed_markers.h"

#include "base/text_copy.h"
#include "model/phoneme_alphabet.h"
#include "results/sync_marker.h"

#include <vector>

namespace tessarin {
namespace {

constexpr float kVowelScore = 75.0f;
constexpr float kOtherScore = 30.0f;

/// The symbols of the token's pronunciation. A string that goes wrong counts up to there.
std::vector<const phoneme_symbol*> SymbolsOf(const CTxMarker& token) {
    std::vector<const phoneme_symbol*> symbols;
    for (int32_t index = 0; index < token.group_count; ++index) {
        const PhonemeGroup& group = token.groups[index];
        if (group.alternative_count > 0) {
            static_cast<void>(ParsePhonemeString(group.alternatives[0], symbols, nullptr));
        }
    }
    return symbols;
}

CSyncMarker WordMarker(const CTxMarker& token, int32_t startMs) {
    CSyncMarker marker;
    ClearSyncMarker(marker);
    marker.type = kWordMarker;
    marker.start = startMs;
    marker.text_offset = static_cast<int32_t>(token.text_start);
    marker.text_length = static_cast<int32_t>(token.text_end - token.text_start);
    return marker;
}

CSyncMarker PhonemeMarker(const phoneme_symbol& symbol, int32_t startMs) {
    CSyncMarker marker;
    ClearSyncMarker(marker);
    marker.type = kPhonemeMarker;
    marker.start = startMs;
    marker.end = static_cast<int32_t>(static_cast<uint32_t>(startMs) + symbol.duration_ms);
    marker.score = is_vowel_label(symbol.label) ? kVowelScore : kOtherScore;
    CopyText(marker.label, symbol.label);
    return marker;
}

} // namespace

void AddTimedMarkers(std::span<const CTxMarker> tokens, ISyncResultsCollection& results) {
    std::vector<CSyncMarker> timeline;
    int32_t now = 0;
    for (const CTxMarker& token : tokens) {
        if (token.kind != kWordToken) {
            continue;
        }
        const size_t word = timeline.size();
        timeline.push_back(WordMarker(token, now));
        for (const phoneme_symbol* symbol : SymbolsOf(token)) {
            timeline.push_back(PhonemeMarker(*symbol, now));
            now = timeline.back().end;
        }
        timeline[word].end = now;
    }
    for (const CSyncMarker& marker : timeline) {
        results.add_marker(marker);
    }
}

} // namespace tessarin
