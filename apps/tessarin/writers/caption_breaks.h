#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

struct caption_word {
    int32_t startMs;
    int32_t endMs;
    std::string word;
    std::string punctuation = {}; ///< what stands after it in the text
    bool isHyphenated = false;    ///< the next word is the other half of this one
};

using caption = std::span<const caption_word>;

/// A caption that stands for a shorter time is missed by its readers.
inline constexpr int32_t kShortestCaptionMs = 1000;

/// Shares `words` among captions of one line. A pause begins a new caption; all other breaks are
/// chosen together, so that lines are about even, end with sentences and clauses, and never
/// separate a word from the one it leans on. The captions are views of `words`. Audio ends at
/// `endMs`.
std::vector<caption> BreakIntoCaptions(std::span<const caption_word> words, int64_t endMs);
