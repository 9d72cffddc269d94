#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "apps/tessarin/timed_result.h"
#include "tessarin/match_aligner.h"

class SpokenText;

/// What the engine says of how well a text and a recording fit; nothing of an exact alignment.
struct match_report {
    bool isKnown = false;
    tessarin::match_summary summary{};
    std::vector<tessarin::match_word> words;
    std::vector<tessarin::match_stretch> unscripted;
    std::vector<float> phonemes; ///< confidences
};

match_report ReadMatch(tessarin::IMatchAligner& aligner);

/// Adds the report to a result that has the markers of the same search. `fromMs` is where the
/// searched stretch begins.
void AddMatch(const match_report& report, const SpokenText& text, int32_t fromMs,
              timed_result* out);

/// What does not fit, with words and times, in one line for a person; empty when all does.
std::string DescribeMismatch(const timed_result& result);
