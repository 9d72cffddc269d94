#include "apps/tessarin/timed_result.h"

#include <string_view>

#include "apps/tessarin/readers/spoken_text.h"

using tessarin::CSyncMarker;

namespace {

timed_span SpanOf(const CSyncMarker& marker, const SpokenText* text) {
    timed_span span{marker.type,        marker.text != nullptr ? marker.text : "",
                    marker.start,       marker.end,
                    marker.text_offset, marker.text_length};
    if (text != nullptr) {
        const SpokenText::place original = text->FindOriginal(span.textOffset, span.textLength);
        if (const auto part = text->FindPart(span.textOffset, span.textLength)) {
            span.flags = part->flags;
            span.type = part->kind >= TESSARIN_SPEAKER
                            ? kScriptSpan + static_cast<uint32_t>(part->kind)
                            : span.type;
        }
        span.text = text->GetUtf8(span.textOffset, span.textLength);
        span.textOffset = original.offset;
        span.textLength = original.length;
    }
    return span;
}

/// What stands between the halves of a word such as "re-enter", of which a script says two.
bool IsJoint(std::string_view gap) {
    return gap == "-" || gap == "/" || gap == "\xE2\x80\x90" || gap == "\xE2\x80\x91";
}

void FindJoints(const SpokenText& text, std::vector<timed_span>& words) {
    constexpr int32_t kLongestJoint = 3; // bytes
    for (size_t i = 0; i + 1 < words.size(); ++i) {
        const int32_t end = words[i].textOffset + words[i].textLength;
        const int32_t length = words[i + 1].textOffset - end;
        if (length < 1 || length > kLongestJoint) {
            continue;
        }
        const std::string gap = text.GetUtf8({end, length});
        if (IsJoint(gap)) {
            words[i].joint = gap;
        }
    }
}

/// Finds what was said of each word by its phonemes. `starts` are the words' in the local text.
void FindReadings(const SpokenText& text, const std::vector<int32_t>& starts, size_t firstWord,
                  timed_result* out) {
    auto phoneme = out->phonemes.begin();
    for (size_t i = 0; i < starts.size(); ++i) {
        timed_span& word = out->words[firstWord + i];
        std::string said;
        for (; phoneme != out->phonemes.end() && phoneme->startMs < word.endMs; ++phoneme) {
            said += phoneme->startMs >= word.startMs && phoneme->label != "x" ? phoneme->label : "";
        }
        word.reading = text.FindReading(starts[i], said);
    }
}

} // namespace

void CollectMarkers(tessarin::ISyncResultsCollection& results, const SpokenText* text,
                    timed_result* out) {
    const CSyncMarker* const end = results.end();
    const size_t firstWord = out->words.size();
    std::vector<int32_t> wordStarts;
    for (const CSyncMarker* marker = results.begin(); marker != end; ++marker) {
        switch (marker->type) {
        case tessarin::kPhonemeMarker:
            out->phonemes.push_back({marker->label, marker->start, marker->end, marker->score});
            break;
        case tessarin::kWordMarker:
        case tessarin::kPunctuationMarker:
        case tessarin::kTagMarker: {
            auto& spans = marker->type == tessarin::kWordMarker ? out->words : out->events;
            spans.push_back(SpanOf(*marker, text));
            if (marker->type == tessarin::kWordMarker) {
                wordStarts.push_back(marker->text_offset);
            }
            break;
        }
        default:
            break;
        }
    }
    if (text != nullptr) {
        FindJoints(*text, out->words);
        FindReadings(*text, wordStarts, firstWord, out);
    }
}

mouth_frame CopyFrame(const tessarin_frame& frame) {
    mouth_frame copy{frame.start_ms, frame.end_ms, {}};
    for (int32_t i = 0; i < frame.count; ++i) {
        copy.weights.emplace_back(frame.weights[i].label, frame.weights[i].weight);
    }
    return copy;
}

const char* SpanTypeName(uint32_t type) {
    switch (type) {
    case tessarin::kWordMarker:
        return "word";
    case tessarin::kPunctuationMarker:
        return "punctuation";
    case kScriptSpan + TESSARIN_SPEAKER:
        return "speaker";
    case kScriptSpan + TESSARIN_DIRECTION:
        return "direction";
    case kScriptSpan + TESSARIN_ACTION:
        return "action";
    case kScriptSpan + TESSARIN_HEADING:
        return "heading";
    case kUnscriptedSpan:
        return "unscripted";
    default:
        return "tag";
    }
}
