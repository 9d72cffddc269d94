#pragma once

#include <cstdint>
#include <optional>
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
    float confidence = -1.0f; ///< 0 to 1; -1 where it is not known
};

/// The type of a stretch of speech that is not in the text, beside a tessarin::sync_marker_type.
inline constexpr uint32_t kUnscriptedSpan = 100;
/// The type of an event of a script is this and a tessarin_span_kind.
inline constexpr uint32_t kScriptSpan = 200;

/// A word or an event: punctuation, a bracket comment, a tag, what of a script is not said, or
/// speech that is not in the text.
struct timed_span {
    uint32_t type; ///< a tessarin::sync_marker_type, kUnscriptedSpan, or kScriptSpan and more
    std::string text;
    int32_t startMs;
    int32_t endMs;
    int32_t textOffset; ///< in bytes of the user's text
    int32_t textLength;
    uint32_t flags = 0;       ///< of a word: tessarin_word_flags
    float confidence = -1.0f; ///< of a word, 0 to 1; -1 where it is not known
    float margin = 0.0f;      ///< the evidence for a word
    std::string joint = {};   ///< of a word: the hyphen or the like between it and the next
    std::string reading = {}; ///< of a word with several: the one that was said
};

/// How well a text and a recording fit.
struct timed_match {
    std::string verdict; ///< good, doubtful, poor or unknown
    std::string reason;  ///< why it is not good, else empty
    float score = -1.0f; ///< 0 to 1; -1 where it is not known
    bool isLoose = false;
    int32_t unscriptedMs = 0;
    float margin = 0.0f; ///< this and what follows is the evidence for the score
    float fit = 0.0f;
    float duration = -1.0f;
    float spread = 1.0f;
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
    std::vector<timed_span> unsaid; ///< words of the text that were not heard, without times
    std::vector<timed_span> events;
    float adaptationGain = -1.0f; ///< of the model to the voice; -1 where there was none
    std::vector<float> loudness;  ///< of each 10 ms of the audio, in dB; empty when not known
    std::vector<mouth_frame> frames;
    std::vector<weight_curve> curves;
    std::vector<mouth_frame> stretches; ///< mixtures that stand for stretches the user asked for
    std::optional<timed_match> match;   ///< of an alignment that looked for it
};

/// Copies the markers of `results` into `out`. With `text`, spans get their places and their
/// spelling in what the user gave.
void CollectMarkers(tessarin::ISyncResultsCollection& results, const SpokenText* text,
                    timed_result* out);

mouth_frame CopyFrame(const tessarin_frame& frame);

/// The name of a span's type in the outputs: word, punctuation, tag, unscripted, or the part of a
/// script.
const char* SpanTypeName(uint32_t type);
