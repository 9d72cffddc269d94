#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace tessarin {

class state_scores;
class word_chain;

/// What it costs to depart from the text, as positive logarithms.
struct departure_costs {
    double skip;        ///< to leave a word out
    double fillerEntry; ///< to begin to pass over other speech
    double fillerStep;  ///< to go on with that, for each observation

    /// For scores that spread by `spread` (ScoreSpread).
    static departure_costs ForSpread(double spread) {
        return {30.0 * spread, 60.0 * spread, 2.0 + 1.2 * spread};
    }
};

/// Part of a text and how it may stand in the audio: the words from `firstWord` up to `endWord`,
/// with the junctions at both ends.
struct chain_stretch {
    size_t firstWord;
    size_t endWord;
    bool startsAnywhere = false; ///< at any junction at no cost; else at the first one
    bool endsAnywhere = false;   ///< in any place at no cost; else at the last junction
};

/// The best path through a text that need not be what was said.
struct loose_path {
    /// Where an observation is other speech: this plus the number of the junction.
    static constexpr uint32_t kFiller = 0x80000000;

    /// The state of each observation in the graph, or kFiller and more.
    std::vector<uint32_t> states;
    /// Of each word of the stretch: by how much the best path through it is better than the best
    /// one that skips it. A word that is not skipped by the best path has one of at least 0.
    /// Infinite for a word that cannot be skipped.
    std::vector<double> margins;
    double score = 0.0; ///< log-likelihood of the path
};

/// The Viterbi algorithm over a chain of words whose junctions also let words be skipped and other
/// speech be passed over. That scores like the path of `fillerScores`, one for each observation,
/// so it is as good as any text where it is entered, and costs what `costs` say. All states are
/// kept at all observations: after seconds of other speech the right path scores far below those
/// that stretch words over it.
///
/// A second pass from the end gives the margins. Where the back-pointers of all observations need
/// more than `blockBytes`, they are kept for one block of observations, from the last to the first,
/// and made again from the scores at its beginning; memory then grows with the square root of the
/// number of observations.
///
/// `isCancelled` is asked now and then with the share of the work that is done. Returns false when
/// it says so.
[[nodiscard]] bool FindLoosePath(const word_chain& chain, const chain_stretch& stretch,
                                 const state_scores& scores, std::span<const float> fillerScores,
                                 const departure_costs& costs,
                                 const std::function<bool(double)>& isCancelled, loose_path& out,
                                 size_t blockBytes = size_t{16} << 20);

} // namespace tessarin
