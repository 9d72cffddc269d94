#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "apps/tessarin/commands/recording_command.h"
#include "apps/tessarin/readers/spoken_text.h"

/// A sentence of a text, and where it was said, if it was.
struct searched_sentence {
    std::string text;
    SpokenText::place place; ///< in bytes of the user's text
    struct occurrence {
        int32_t startMs;
        int32_t endMs;
        double score; ///< how much better it fits than noise does, for each observation
    };
    std::optional<occurrence> found;
};

/// Opens a stretch of the recording.
using recording_opener = std::function<opened_recording(const recording_stretch& stretch)>;

/// Searches `stretch`, whose end is given, for each sentence of `text`, in the order of the text; a
/// sentence is found when it scores `leastScore`. A `beam` of 0 is the engine's own. Throws
/// Failure.
std::vector<searched_sentence>
SearchForSentences(const recording_opener& open, const recording_stretch& stretch,
                   tessarin::CAccousticHMM& model, const SpokenText& text,
                   tessarin::IVisemixTranscriber& transcriber, int beam, double leastScore,
                   tessarin::ProgressSink& progress);
