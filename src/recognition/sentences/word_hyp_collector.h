#pragma once

#include <cstdint>
#include <vector>

#include "tessarin/error_codes.h"

namespace tessarin {

class ProgressSink;

/// One place at which a sentence may have been said.
struct full_word_hypothesis {
    uint32_t span; ///< number of the sentence
    uint32_t start;
    uint32_t end;          ///< observations
    double score;          ///< with the best of the sentences before it
    double backgroundGain; ///< how much better noise is than any speech, in logarithms
};

/// How a path went through a sentence.
struct word_end {
    uint32_t start;   ///< observation at which it was entered
    uint32_t end;     ///< observation of now
    double pathGain;  ///< logarithms: what the path's score grew by
    double freeGain;  ///< and that of a search for any speech
    double noiseGain; ///< and that of one for noise
};

/// The places at which one sentence may have been said. A search reports them in the order of their
/// ends.
class WordHypCollector {
public:
    /// `precedingSentence` is null for the first one, and must outlive this.
    WordHypCollector(uint32_t span, const WordHypCollector* precedingSentence);

    /// Takes a place, if it is not much worse than the best so far, and if the sentence before can
    /// have ended in time.
    void Add(const word_end& place);

    const std::vector<full_word_hypothesis>& Hypotheses() const { return hypotheses; }

private:
    /// The best score of those that end no later than `frame`; null without one.
    const double* BestUpTo(uint32_t frame) const;

    uint32_t index;
    const WordHypCollector* preceding;
    std::vector<full_word_hypothesis> hypotheses;
    std::vector<double> bestScores; // of each hypothesis and all before it
    double floor;
    double bestScore;
};

/// Chooses a place for each sentence so that they follow each other and their scores add up to the
/// most; a sentence that fits nowhere is passed over. In the order of time. Returns 0, or 5 when
/// `progress` (may be null) cancels.
[[nodiscard]] error_code ChooseHypotheses(const std::vector<WordHypCollector>& collectors,
                                          ProgressSink* progress,
                                          std::vector<full_word_hypothesis>& chosen);

} // namespace tessarin
