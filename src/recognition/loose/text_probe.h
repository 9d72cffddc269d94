#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace tessarin {

class state_scores;
class word_chain;
struct departure_costs;

/// Looks for audio in a long text: the junction that it has come to when the observations from
/// `first` on end, of those from `firstWord` on. Nothing unless the text there fits far better than
/// other speech, and better than anywhere else in the text. Only scores are kept, no paths, so
/// memory does not depend on the number of observations.
std::optional<size_t> FindInText(const word_chain& chain, size_t firstWord,
                                 const state_scores& scores, size_t first,
                                 std::span<const float> fillerScores, const departure_costs& costs);

} // namespace tessarin
