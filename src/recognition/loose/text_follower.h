#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "recognition/loose/heard_phones.h"
#include "recognition/loose/loose_viterbi.h"
#include "recognition/loose/state_scores.h"

namespace tessarin {

class CAccousticHMM;
class word_chain;

/// The best path of a whole recording through a text that need not be what was said.
struct followed_path {
    std::vector<uint32_t> states;      ///< as loose_path's
    std::vector<uint16_t> heardStates; ///< of the model, as heard without the text
    /// Of each word, divided by the spread; infinite for one that cannot be skipped, and minus
    /// infinite for one that was not looked at.
    std::vector<double> margins;
    double spread = 1.0;
    double fit = 0.0;     ///< of the path in the text above what was heard, summed over speech
    size_t spoken = 0;    ///< observations of it
    bool isFound = false; ///< there is none for pauses longer than the audio
};

/// How text_follower divides its work.
struct follower_limits {
    size_t piece = 3000;            ///< observations after which a cut is looked for
    size_t mostPiece = 12000;       ///< after which the text counts as lost
    size_t whole = 4500;            ///< that are searched at once, without a cut
    size_t tail = 500;              ///< at the end of a piece, which are not sure yet
    size_t probe = 1000;            ///< in which a lost text is looked for
    uint64_t cells = 1u << 27;      ///< states times observations of one search
    uint64_t probeCells = 3u << 30; ///< of all searches for a lost text ...
    uint64_t probeRate = 8000;      ///< ... and so many more for each observation
};

/// Follows a text through a recording that arrives bit by bit, in time and memory that do not
/// depend on how long the recording is. A short recording is searched as a whole. A longer one is
/// searched piece by piece (FindLoosePath): where several words in a row are sure, all paths worth
/// considering go through the place between them, so what was before it is settled and forgotten.
/// Where no such place is found for long, the text is lost: then the latest seconds are looked for
/// in all that is left of the text (FindInText), and what comes before them is other speech.
class text_follower {
public:
    /// A recording of `observations` in all.
    text_follower(const CAccousticHMM& acousticModel, const word_chain& wordChain,
                  size_t observations, const follower_limits& followerLimits = {});

    /// Goes on with the observation `x`. Throws std::bad_alloc.
    void Add(const float* x);
    size_t GetCount() const { return received; }
    /// After the last observation. False when `isCancelled` says so.
    [[nodiscard]] bool Finish(const std::function<bool(double)>& isCancelled);

    const followed_path& GetPath() const { return settled; }
    /// The log-likelihood of an observation in a state of the model, above that of what was heard;
    /// nothing where the recording was not searched as a whole.
    std::optional<double> AboveHeard(size_t observation, size_t modelState) const;

private:
    struct cut {
        size_t observation;
        size_t junction;
    };
    struct word_span {
        size_t first = SIZE_MAX;
        size_t end = 0;
        bool isSaid() const { return end > 0; }
    };

    size_t Left() const { return total - settled.states.size(); }
    void ScorePending();
    void Hear();
    size_t WindowEnd(size_t firstWord, size_t states) const;
    size_t StatesUpTo(size_t firstWord, size_t endWord) const;
    bool SearchPiece(chain_stretch stretch, const std::function<bool(double)>& isCancelled);
    void FindSpans();
    bool IsSureRun(size_t begin, size_t end) const;
    std::optional<cut> FindCut() const;
    std::optional<cut> FindLastSure() const;
    double TextFit(size_t t) const;
    void Settle(const cut& at);
    void SettleAsOther(size_t observations);
    void SettleHeard(size_t observations);
    void Follow();
    bool IsAtEdge() const;
    void Lose();
    bool FindAgain();

    const CAccousticHMM& model;
    const word_chain& chain;
    const follower_limits limits;
    const size_t total;
    const size_t width; // of an observation
    size_t received = 0;
    std::vector<float> pending;
    state_scores scores; // of what is not settled
    heard_phones heard;
    heard_distance distance; // of what is settled
    double spread = 1.0;     // of what is not
    loose_path path;
    chain_stretch searched{0, 0};
    std::vector<word_span> spans;        // of the words searched, in observations
    std::vector<uint32_t> fillersBefore; // each observation
    size_t nextLength;
    size_t nextWord = 0;
    bool isLost = false;
    bool isWhole = false;
    uint64_t probed = 0;
    followed_path settled;
};

} // namespace tessarin
