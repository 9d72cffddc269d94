#include "apps/tessarin/timed_result.h"

#include "apps/tessarin/readers/spoken_text.h"

using tessarin::articulation;
using tessarin::articulation_envelope;
using tessarin::CSyncMarker;

namespace {

timed_span SpanOf(const CSyncMarker& marker, const SpokenText* text) {
    timed_span span{marker.type,        marker.text != nullptr ? marker.text : "",
                    marker.start,       marker.end,
                    marker.text_offset, marker.text_length};
    if (text != nullptr) {
        const SpokenText::place original = text->FindOriginal(span.textOffset, span.textLength);
        span.text = text->GetUtf8(span.textOffset, span.textLength);
        span.textOffset = original.offset;
        span.textLength = original.length;
    }
    return span;
}

} // namespace

void CollectMarkers(tessarin::ISyncResultsCollection& results, const SpokenText* text,
                    timed_result* out) {
    const CSyncMarker* const end = results.end();
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
            break;
        }
        default:
            break;
        }
    }
}

void CollectFrames(tessarin::IPhnMixtureArticulator& articulator, timed_result* out) {
    const articulation* const end = articulator.GetArticulationsEnd();
    for (const articulation* frame = articulator.GetArticulationsBegin(); frame != end; ++frame) {
        out->frames.push_back(CopyFrame(*frame));
    }
}

mouth_frame CopyFrame(const articulation& frame) {
    mouth_frame copy{frame.start, frame.end, {}};
    for (int32_t i = 0; i < frame.count; ++i) {
        copy.weights.emplace_back(frame.entries[i].label, frame.entries[i].weight);
    }
    return copy;
}

void CollectCurves(tessarin::IPhnMixtureArticulator& articulator, timed_result* out) {
    const articulation_envelope* const end = articulator.GetEnvelopesEnd();
    for (const articulation_envelope* each = articulator.GetEnvelopesBegin(); each != end; ++each) {
        weight_curve& curve = out->curves.emplace_back();
        curve.label = each->label;
        curve.startMs = each->start;
        curve.endMs = each->end;
        for (int32_t i = 0; i < each->count; ++i) {
            curve.keys.emplace_back(each->points[i].t1, each->points[i].value);
        }
    }
}

const char* SpanTypeName(uint32_t type) {
    switch (type) {
    case tessarin::kWordMarker:
        return "word";
    case tessarin::kPunctuationMarker:
        return "punctuation";
    case kUnscriptedSpan:
        return "unscripted";
    default:
        return "tag";
    }
}
