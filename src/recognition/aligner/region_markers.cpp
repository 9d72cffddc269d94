#include "recognition/aligner/region_markers.h"

#include <cstring>
#include <optional>

#include "base/allocation.h"
#include "results/saturated.h"
#include "results/sync_marker.h"
#include "tessarin/transcriber.h"

namespace tessarin {
namespace {

/// The type of a token's span; cuts and unknown kinds leave none.
std::optional<uint32_t> SpanType(uint32_t kind) {
    switch (kind) {
    case kWordToken:
        return kWordMarker;
    case kPunctuationToken:
        return kPunctuationMarker;
    case kTagToken:
        return kTagMarker;
    default:
        return std::nullopt;
    }
}

uint32_t SearchPosition(const CSyncMarker& phone) {
    return static_cast<uint32_t>(phone.text_offset);
}

/// The end of a span that opens at phone `index`: where the first phone after it starts.
int32_t SpanEnd(const TArray<CSyncMarker>& phones, int32_t index, uint32_t lastState) {
    int32_t end = phones[index].start;
    for (int32_t i = index; i < phones.GetSize(); ++i) {
        if (SearchPosition(phones[i]) >= lastState) {
            return phones[i].start;
        }
        end = phones[i].end;
    }
    return end;
}

/// A terminated copy of a stretch of the text, from the allocator that the markers' texts have.
char* CopySpan(const char* text, size_t length) {
    char* copy = static_cast<char*>(alloc(length + 1, false));
    if (copy != nullptr) {
        const size_t present = strnlen(text, length);
        std::memcpy(copy, text, present);
        copy[present] = '\0';
    }
    return copy;
}

/// Appends the span of `token` to `results`. `span` brings type and times.
error_code AppendSpan(TArray<CSyncMarker>& results, CSyncMarker span, const CTxMarker& token,
                      const char* text, int64_t textLength) {
    int64_t length = int64_t{token.text_end} - token.text_start;
    if (text != nullptr && token.text_end > textLength) {
        length = textLength - token.text_start;
    }
    span.text = nullptr;
    span.text_offset = Saturated(token.text_start);
    span.text_length = Saturated(length);
    if (text != nullptr && length >= 0) {
        span.text = CopySpan(text + token.text_start, static_cast<size_t>(length));
        if (span.text == nullptr) {
            return kOutOfMemory;
        }
    }
    if (results.Add(span) == 0) {
        DeleteSyncMarker(span);
        return kOutOfMemory;
    }
    return kNoError;
}

} // namespace

error_code EmitRegionMarkers(TArray<CSyncMarker>& results, TArray<CSyncMarker>& phones,
                             int32_t offsetMs, std::span<const CTxMarker> markers, const char* text,
                             int64_t textLength, bool keepPhonemes) {
    for (CSyncMarker& phone : phones) {
        phone.start = Saturated(int64_t{phone.start} + offsetMs);
        phone.end = Saturated(int64_t{phone.end} + offsetMs);
    }
    auto token = markers.begin();
    int32_t lastOffset = 0;
    for (int32_t i = 0; i < phones.GetSize(); ++i) {
        CSyncMarker phone = phones[i];
        phone.text_offset = lastOffset;
        const bool isLast = i + 1 == phones.GetSize();
        for (; token != markers.end(); ++token) {
            if (SearchPosition(phones[i]) < token->first_state && !isLast) {
                break;
            }
            const std::optional<uint32_t> type = SpanType(token->kind);
            if (!type) {
                continue;
            }
            // Kept: a span's score and label are left over from the phone that it opens at; only
            // the fields of a span mean something.
            CSyncMarker span = phones[i];
            span.type = *type;
            span.end = SpanEnd(phones, i, token->last_state);
            const error_code code = AppendSpan(results, span, *token, text, textLength);
            if (code != kNoError) {
                return code;
            }
            lastOffset = Saturated(token->text_start);
        }
        // Kept: spans and phones stand in the order in which they are produced, not by time, so
        // that a phone's segments stay after it.
        const bool wanted = keepPhonemes || phone.type != kPhonemeMarker;
        if (wanted && results.Add(phone) == 0) {
            return kOutOfMemory;
        }
    }
    return kNoError;
}

} // namespace tessarin
