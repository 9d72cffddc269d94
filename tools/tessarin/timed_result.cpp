#include "tools/tessarin/timed_result.h"

using tessarin::articulation;
using tessarin::CSyncMarker;

void CollectMarkers(tessarin::ISyncResultsCollection& results, timed_result* out) {
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
            spans.push_back({marker->type, marker->text ? marker->text : "", marker->start,
                             marker->end, marker->text_offset, marker->text_length});
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
        mouth_frame& copy = out->frames.emplace_back();
        copy.startMs = frame->start;
        copy.endMs = frame->end;
        for (int32_t i = 0; i < frame->count; ++i) {
            copy.weights.emplace_back(frame->entries[i].label, frame->entries[i].weight);
        }
    }
}

const char* SpanTypeName(uint32_t type) {
    switch (type) {
    case tessarin::kWordMarker:
        return "word";
    case tessarin::kPunctuationMarker:
        return "punctuation";
    default:
        return "tag";
    }
}
