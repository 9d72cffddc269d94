#pragma once

#include "apps/tessarin/commands/recording_command.h"
#include "apps/tessarin/readers/spoken_text.h"

/// How sentences are looked for.
struct sentence_options {
    int beam = 0;            ///< states; 0 is the engine's own
    double leastScore = 5.5; ///< of a sentence that is found
};

/// Looks for the sentences of `text` in the recording and writes where they are, as JSON or TSV.
/// Throws Failure.
void FindSentences(const recording_options& options, const sentence_options& search,
                   const SpokenText& text, const tessarin_script_options& script,
                   tessarin_language& language);
