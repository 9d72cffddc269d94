#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tessarin/sync_results.h"
#include "tessarin/tessarin_c.h"

class SpokenText;

struct timed_phoneme {
    std::string label;
    int32_t startMs;
    int32_t endMs;
    float score;
};

/// The type of an event of a script is this and a tessarin_span_kind.
inline constexpr uint32_t kScriptSpan = 200;

/// A word or a text event: punctuation, a bracket comment, a tag, or what of a script is not said.
struct timed_span {
    uint32_t type; ///< a tessarin::sync_marker_type, or kScriptSpan and more
    std::string text;
    int32_t startMs;
    int32_t endMs;
    int32_t textOffset; ///< in bytes of the user's text
    int32_t textLength;
    uint32_t flags = 0; ///< of a word: tessarin_word_flags
};

struct mouth_frame {
    int32_t startMs;
    int32_t endMs;
    std::vector<std::pair<std::string, float>> weights; ///< label and weight, largest first
};

/// The weight of one occurrence of a phoneme over time.
struct weight_curve {
    std::string label;
    int32_t startMs;
    int32_t endMs;
    std::vector<std::pair<int32_t, float>> keys; ///< milliseconds and weight; straight in between
};

/// What a run found, free of the engine's objects: every output format is written from this.
struct timed_result {
    std::string audio;
    int64_t durationMs = 0;
    int code = 0;
    std::string message;
    std::vector<timed_phoneme> phonemes;
    std::vector<timed_span> words;
    std::vector<timed_span> events;
    std::vector<float> loudness; ///< of each 10 ms of the audio, in dB; empty when not known
    std::vector<mouth_frame> frames;
    std::vector<weight_curve> curves;
    std::vector<mouth_frame> stretches; ///< mixtures that stand for stretches the user asked for
};

/// Copies the markers of `results` into `out`. With `text`, spans get their places and their
/// spelling in what the user gave.
void CollectMarkers(tessarin::ISyncResultsCollection& results, const SpokenText* text,
                    timed_result* out);

mouth_frame CopyFrame(const tessarin_frame& frame);

/// The name of a span's type in the outputs: word, punctuation, tag, or the part of a script.
const char* SpanTypeName(uint32_t type);
