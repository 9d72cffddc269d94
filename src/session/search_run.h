#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "session/audio_samples.h"
#include "session/span_text.h"
#include "session/transcriber_pool.h"
#include "tessarin/owned.h"
#include "tessarin/tessarin_c.h"

struct tessarin_model {
    std::shared_ptr<tessarin::CAccousticHMM> hmm; ///< shared with what listens to live audio
    std::string calibration;                      ///< empty: none
    std::string image; ///< for searches that change their model, and so take one of their own
    std::vector<const char*> labels;
    tessarin_model_facts facts{};
};

/// What a search found: the engine's own markers, from which tracks are made, and their copies.
struct tessarin_result {
    tessarin::results_owner markers;
    std::vector<tessarin_phoneme> phonemes;
    std::vector<tessarin_span> words;
    std::vector<uint32_t> wordFlags;       ///< of each word
    std::vector<std::string> wordReadings; ///< likewise; empty where a word has only one
    std::vector<tessarin_span> events;
    std::vector<float> loudness;  ///< of each 10 ms of the audio, in dB; empty when not known
    float adaptationGain = -1.0f; ///< -1: not adapted
    std::vector<tessarin_span> unsaid;
    std::optional<tessarin_match> match;
    std::vector<tessarin_word_match> wordMatches;
    std::vector<float> phonemeConfidences;
    std::vector<std::unique_ptr<std::string>> texts; ///< of the spans
    mutable std::mutex lock;                         ///< over the markers
};

struct tessarin_transcript {
    std::vector<tessarin_token> tokens;
    std::vector<std::unique_ptr<std::string>> texts;
};

namespace tessarin {

/// What a search is given.
struct search_input {
    const tessarin_model& model;
    const tessarin_audio& audio;
    const tessarin_search_options* options;
    const tessarin_progress* progress;
};

/// Copies the options of any version of the struct; null gives the defaults. Returns 0, or 2 for a
/// size or a flag that does not exist.
error_code ReadSearchOptions(const tessarin_search_options* given, tessarin_search_options& out);

/// Has a time in a stretch count from the beginning of the audio, held to the range of the result.
int32_t ShiftTime(int32_t ms, int32_t shiftMs);

/// `text` as it stays in `texts`.
const char* Keep(std::string text, std::vector<std::unique_ptr<std::string>>& texts);

/// Gives `model` the calibration `text`, or none when that fails.
error_code SetCalibration(std::string_view text, tessarin_model& model);

/// Both set `out` when they return 0 or kRecognitionFailed.
error_code Align(const search_input& input, tessarin_language& language, const char* text,
                 std::unique_ptr<tessarin_result>& out);
error_code Recognize(const search_input& input, std::unique_ptr<tessarin_result>& out);

error_code Transcribe(tessarin_language& language, const char* text,
                      const tessarin_script_options* options,
                      std::unique_ptr<tessarin_transcript>& out);

} // namespace tessarin
