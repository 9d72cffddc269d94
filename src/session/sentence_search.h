#pragma once

#include <memory>
#include <string>
#include <vector>

#include "session/search_run.h"

/// The sentences of a text, and where each was said.
struct tessarin_sentence_search {
    std::vector<tessarin_sentence> sentences;
    std::vector<std::unique_ptr<std::string>> texts; ///< of the sentences
};

namespace tessarin {

/// Searches a stretch of audio for each sentence of `text`, in the order of the text; a sentence is
/// found when it scores `minScore`, or 5.5 for 0.
error_code SearchSentences(const search_input& input, tessarin_language& language, const char* text,
                           double minScore, std::unique_ptr<tessarin_sentence_search>& out);

} // namespace tessarin
