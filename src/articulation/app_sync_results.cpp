#include "articulation/app_sync_results.h"

#include <cstddef>
#include <string>

#include "base/text_copy.h"

namespace tessarin {
namespace {

/// Whether the marker's span lies in a text of `length` characters.
bool SpanLiesWithin(const CSyncMarker& marker, size_t length) {
    const auto limit = static_cast<int64_t>(length);
    return marker.text_offset >= 0 && marker.text_offset < limit && marker.text_length >= 0 &&
           int64_t{marker.text_offset} + marker.text_length <= limit;
}

} // namespace

void ReadSyncResults(ISyncResultsCollection& results, std::string_view text, bool allKinds,
                     app_sync_results& sorted) {
    const CSyncMarker* markers = results.begin();
    const auto count = static_cast<size_t>(markers == nullptr ? 0 : results.end() - markers);
    sorted.phonemes.reserve(sorted.phonemes.size() + count);
    bool phonemeIsLast = false; // so that its first state segment replaces it
    std::string stateLabel;
    std::string spanText;
    for (const CSyncMarker* marker = markers; marker != markers + count; ++marker) {
        switch (marker->type) {
        case kPhonemeMarker:
            sorted.phonemes.emplace_back(marker->start, marker->end,
                                         std::string(FieldText(marker->label)), marker->score);
            phonemeIsLast = true;
            break;
        case kStateMarker:
            if (phonemeIsLast) {
                stateLabel = sorted.phonemes.back().label;
                sorted.phonemes.pop_back();
                phonemeIsLast = false;
            }
            sorted.phonemes.emplace_back(marker->start, marker->end, stateLabel, marker->score);
            break;
        case kWordMarker:
        case kPunctuationMarker:
        case kTagMarker:
            if (!allKinds) {
                break;
            }
            // Kept: a span outside the text keeps the text of the span before it.
            if (SpanLiesWithin(*marker, text.size())) {
                spanText = text.substr(static_cast<size_t>(marker->text_offset),
                                       static_cast<size_t>(marker->text_length));
            }
            if (marker->type == kWordMarker) {
                sorted.words.emplace_back(marker->start, marker->end, spanText);
            } else if (marker->type == kPunctuationMarker) {
                sorted.first_events.emplace_back(marker->start, marker->end, spanText);
            } else {
                sorted.second_events.emplace_back(marker->start, marker->end, spanText);
            }
            break;
        default:
            break;
        }
    }
}

} // namespace tessarin
