#include "recognition/loose/loose_viterbi.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "recognition/loose/state_scores.h"
#include "recognition/loose/word_chain.h"

namespace tessarin {
namespace {

constexpr double kNever = -std::numeric_limits<double>::infinity();
constexpr uint8_t kFromJunction = UINT8_MAX;
constexpr uint32_t kFromSkip = UINT32_MAX;
constexpr uint32_t kFromFiller = UINT32_MAX - 1;
constexpr size_t kCancelInterval = 256;

/// Scores of all places of the chain between two observations.
struct place_scores {
    std::vector<double> states;
    std::vector<double> fillers;   // of each junction
    std::vector<double> junctions; // after the observations so far
};

enum class state_kind : uint8_t {
    kOther,
    kInner, ///< entered from the state before and from itself
    kFirst, ///< entered from a junction and from itself
};

/// A state of the chain, laid out for speed.
struct plain_state {
    double stay = 0.0;
    double step = 0.0;
    uint32_t entry = 0;
    uint16_t modelState = 0;
    state_kind kind = state_kind::kOther;
};

/// What the way back needs of the observations of a block.
struct block_rows {
    std::vector<uint8_t> arcs;        // number of the arc into each state, or kFromJunction
    std::vector<uint8_t> fillerStays; // of each junction
    std::vector<uint32_t> sources;    // of each junction: state of an exit, kFromFiller, kFromSkip
    std::vector<double> wordEnds;     // best score of each word's exits
    std::vector<double> junctions;    // scores of the junctions
};

/// One run of the search.
class loose_search {
public:
    loose_search(const word_chain& wordChain, const state_scores& stateScores,
                 std::span<const float> fillers, const departure_costs& departureCosts,
                 size_t blockBytes);

    bool Run(const std::function<bool(double)>& isCancelled, loose_path& out);

private:
    place_scores Begin() const;
    void Advance(size_t t, const place_scores& from, place_scores& to, size_t row);
    void EnterStates(size_t t, const place_scores& from, place_scores& to, size_t row);
    double EnterOther(size_t state, const place_scores& from, uint8_t& source) const;
    void SortStates();
    void FinishJunctions(place_scores& to, size_t row);
    void SkipWords(std::vector<double>& junctions, uint32_t* sources) const;
    double SkipCost(size_t word) const;

    void FillBlock(size_t block);
    void TraceBack(size_t block, loose_path& out);
    void CollectMargins(size_t block, loose_path& out);
    void Retreat(size_t t);
    void LeaveByExits(std::span<const word_chain::exit>, double score);
    void EndBackward();
    void JudgeWords(const double* wordEnds, const double* junctions);

    const word_chain& chain;
    const state_scores& scores;
    const std::span<const float> fillerScores;
    const departure_costs costs;
    const size_t count;
    const size_t numStates;
    const size_t numWords;
    const size_t numJunctions;
    size_t blockLength;

    std::vector<plain_state> plainStates;
    std::vector<place_scores> checkpoints; // before the first observation of each block
    block_rows rows;
    place_scores scratch;
    place_scores backward; // best score of what is left, of a path about to enter the place
    std::vector<double> rest;
    std::vector<double> through; // best path through each word, and past it
    std::vector<double> past;
    uint32_t place = 0; // of the way back: junction while isAtJunction, else state or filler
    bool isAtJunction = true;
};

loose_search::loose_search(const word_chain& wordChain, const state_scores& stateScores,
                           std::span<const float> fillers, const departure_costs& departureCosts,
                           size_t blockBytes)
    : chain(wordChain), scores(stateScores), fillerScores(fillers), costs(departureCosts),
      count(stateScores.GetCount()), numStates(wordChain.GetNumStates()),
      numWords(wordChain.GetWords().size()), numJunctions(wordChain.GetNumJunctions()) {
    const size_t rowBytes = numStates + numJunctions * (sizeof(uint32_t) + 1 + sizeof(double)) +
                            numWords * sizeof(double);
    blockLength = std::clamp<size_t>(blockBytes / rowBytes, 16, std::max<size_t>(count, 16));
    const size_t length = std::min(blockLength, count);
    rows.arcs.resize(length * numStates);
    rows.fillerStays.resize(length * numJunctions);
    rows.sources.resize(length * numJunctions);
    rows.junctions.resize(length * numJunctions);
    rows.wordEnds.resize(length * numWords);
    through.assign(numWords, kNever);
    past.assign(numWords, kNever);
    rest.resize(numStates);
    SortStates();
}

/// Nearly all states are entered from themselves and either the one before or a junction.
void loose_search::SortStates() {
    for (size_t state = 0; state < numStates; ++state) {
        const auto into = chain.Into(state);
        const uint32_t entry = chain.GetEntry(state);
        plain_state& plain = plainStates.emplace_back();
        plain.modelState = chain.GetModelState(state);
        plain.entry = entry;
        const bool isEntered = entry != word_chain::kNoJunction;
        const bool staysLast = !into.empty() && into.back().from == state;
        if (isEntered && into.size() == 1 && staysLast) {
            plain.kind = state_kind::kFirst;
            plain.stay = static_cast<double>(into[0].log);
        } else if (!isEntered && into.size() == 2 && into[0].from + 1 == state && staysLast) {
            plain.kind = state_kind::kInner;
            plain.step = static_cast<double>(into[0].log);
            plain.stay = static_cast<double>(into[1].log);
        }
    }
}

double loose_search::SkipCost(size_t word) const {
    const word_chain::word& each = chain.GetWords()[word];
    if (each.isOptional) {
        return 0.0;
    }
    return each.isSkippable ? costs.skip : -kNever;
}

void loose_search::SkipWords(std::vector<double>& junctions, uint32_t* sources) const {
    for (size_t word = 0; word < numWords; ++word) {
        const double skipped = junctions[word] - SkipCost(word);
        if (skipped > junctions[word + 1]) {
            junctions[word + 1] = skipped;
            if (sources != nullptr) {
                sources[word + 1] = kFromSkip;
            }
        }
    }
}

place_scores loose_search::Begin() const {
    place_scores begin{std::vector<double>(numStates, kNever),
                       std::vector<double>(numJunctions, kNever),
                       std::vector<double>(numJunctions, kNever)};
    begin.junctions[0] = 0.0;
    SkipWords(begin.junctions, nullptr);
    return begin;
}

void loose_search::EnterStates(size_t t, const place_scores& from, place_scores& to, size_t row) {
    const float* const output = scores[t];
    uint8_t* const arcs = rows.arcs.data() + row * numStates;
    const double* const before = from.states.data();
    for (size_t state = 0; state < numStates; ++state) {
        const plain_state& plain = plainStates[state];
        double best = before[state] + plain.stay;
        uint8_t source = 0;
        switch (plain.kind) {
        case state_kind::kInner: {
            const double stepped = before[state - 1] + plain.step;
            source = best > stepped ? 1 : 0;
            best = std::max(stepped, best);
            break;
        }
        case state_kind::kFirst: {
            const double entered = from.junctions[plain.entry];
            source = best > entered ? 0 : kFromJunction;
            best = std::max(entered, best);
            break;
        }
        case state_kind::kOther:
            best = EnterOther(state, from, source);
            break;
        }
        to.states[state] = best + static_cast<double>(output[plain.modelState]);
        arcs[state] = source;
    }
}

double loose_search::EnterOther(size_t state, const place_scores& from, uint8_t& source) const {
    const uint32_t entry = chain.GetEntry(state);
    double best = entry != word_chain::kNoJunction ? from.junctions[entry] : kNever;
    source = kFromJunction;
    uint8_t number = 0;
    for (const word_chain::arc& arc : chain.Into(state)) {
        const double score = from.states[arc.from] + static_cast<double>(arc.log);
        if (score > best) {
            best = score;
            source = number;
        }
        ++number;
    }
    return best;
}

void loose_search::FinishJunctions(place_scores& to, size_t row) {
    uint32_t* const sources = rows.sources.data() + row * numJunctions;
    double* const wordEnds = rows.wordEnds.data() + row * numWords;
    for (size_t junction = 0; junction < numJunctions; ++junction) {
        double best = kNever;
        uint32_t source = kFromFiller;
        const auto leave = [&](std::span<const word_chain::exit> exits) {
            for (const word_chain::exit& exit : exits) {
                const double score = to.states[exit.state] + static_cast<double>(exit.log);
                if (score > best) {
                    best = score;
                    source = exit.state;
                }
            }
        };
        if (junction > 0) {
            leave(chain.WordExits(junction - 1));
            wordEnds[junction - 1] = best;
        }
        leave(chain.SilenceExits(junction));
        if (to.fillers[junction] > best) {
            best = to.fillers[junction];
            source = kFromFiller;
        }
        to.junctions[junction] = best;
        sources[junction] = source;
    }
    SkipWords(to.junctions, sources);
    std::ranges::copy(to.junctions,
                      rows.junctions.begin() + static_cast<std::ptrdiff_t>(row * numJunctions));
}

/// From before observation `t` to after it; `row` of the block receives the way back.
void loose_search::Advance(size_t t, const place_scores& from, place_scores& to, size_t row) {
    EnterStates(t, from, to, row);
    const double step = static_cast<double>(fillerScores[t]) - costs.fillerStep;
    for (size_t junction = 0; junction < numJunctions; ++junction) {
        const double entered = from.junctions[junction] - costs.fillerEntry;
        const bool stays = from.fillers[junction] >= entered;
        to.fillers[junction] = (stays ? from.fillers[junction] : entered) + step;
        rows.fillerStays[row * numJunctions + junction] = stays ? 1 : 0;
    }
    FinishJunctions(to, row);
}

void loose_search::FillBlock(size_t block) {
    place_scores from = checkpoints[block];
    const size_t first = block * blockLength;
    const size_t end = std::min(first + blockLength, count);
    for (size_t t = first; t < end; ++t) {
        Advance(t, from, scratch, t - first);
        std::swap(from, scratch);
    }
}

void loose_search::TraceBack(size_t block, loose_path& out) {
    const size_t first = block * blockLength;
    for (size_t t = std::min(first + blockLength, count); t-- > first;) {
        const size_t row = t - first;
        while (isAtJunction) {
            const uint32_t source = rows.sources[row * numJunctions + place];
            if (source == kFromSkip) {
                --place;
                continue;
            }
            isAtJunction = false;
            place = source == kFromFiller ? loose_path::kFiller + place : source;
        }
        out.states[t] = place;
        if (place >= loose_path::kFiller) {
            const uint32_t junction = place - loose_path::kFiller;
            if (rows.fillerStays[row * numJunctions + junction] == 0) {
                place = junction;
                isAtJunction = true;
            }
            continue;
        }
        const uint8_t arc = rows.arcs[row * numStates + place];
        isAtJunction = arc == kFromJunction;
        place = isAtJunction ? chain.GetEntry(place) : chain.Into(place)[arc].from;
    }
}

/// After the last observation a path must stand at the last junction, if only by skips.
void loose_search::EndBackward() {
    backward = {std::vector<double>(numStates, kNever), std::vector<double>(numJunctions, kNever),
                std::vector<double>(numJunctions, kNever)};
    backward.junctions.back() = 0.0;
    for (size_t word = numWords; word-- > 0;) {
        backward.junctions[word] = backward.junctions[word + 1] - SkipCost(word);
    }
}

void loose_search::LeaveByExits(std::span<const word_chain::exit> exits, double score) {
    for (const word_chain::exit& exit : exits) {
        rest[exit.state] = std::max(rest[exit.state], score + static_cast<double>(exit.log));
    }
}

/// From after observation `t` to before it: `backward` has the best that is still to come for a
/// path that is about to enter each place at the next observation, and goes back by one.
void loose_search::Retreat(size_t t) {
    std::ranges::fill(rest, kNever);
    for (size_t junction = 0; junction < numJunctions; ++junction) {
        if (junction > 0) {
            LeaveByExits(chain.WordExits(junction - 1), backward.junctions[junction]);
        }
        LeaveByExits(chain.SilenceExits(junction), backward.junctions[junction]);
    }
    for (size_t state = 0; state < numStates; ++state) {
        const plain_state& plain = plainStates[state];
        const double next = backward.states[state];
        if (plain.kind == state_kind::kOther) {
            for (const word_chain::arc& arc : chain.Into(state)) {
                rest[arc.from] = std::max(rest[arc.from], next + static_cast<double>(arc.log));
            }
            continue;
        }
        rest[state] = std::max(rest[state], next + plain.stay);
        if (plain.kind == state_kind::kInner) {
            rest[state - 1] = std::max(rest[state - 1], next + plain.step);
        }
    }
    const double step = static_cast<double>(fillerScores[t]) - costs.fillerStep;
    for (size_t junction = 0; junction < numJunctions; ++junction) {
        backward.fillers[junction] =
            std::max(backward.fillers[junction], backward.junctions[junction]) + step;
        backward.junctions[junction] = backward.fillers[junction] - costs.fillerEntry;
    }
    const float* const output = scores[t];
    for (size_t state = 0; state < numStates; ++state) {
        const plain_state& plain = plainStates[state];
        const double score = rest[state] + static_cast<double>(output[plain.modelState]);
        backward.states[state] = score;
        if (plain.kind != state_kind::kInner && plain.entry != word_chain::kNoJunction) {
            backward.junctions[plain.entry] = std::max(backward.junctions[plain.entry], score);
        }
    }
    for (size_t word = numWords; word-- > 0;) {
        backward.junctions[word] =
            std::max(backward.junctions[word], backward.junctions[word + 1] - SkipCost(word));
    }
}

/// With `backward` after the observation whose scores are given.
void loose_search::JudgeWords(const double* wordEnds, const double* junctions) {
    for (size_t word = 0; word < numWords; ++word) {
        const double left = backward.junctions[word + 1];
        if (wordEnds != nullptr) {
            through[word] = std::max(through[word], wordEnds[word] + left);
        }
        past[word] = std::max(past[word], junctions[word] - SkipCost(word) + left);
    }
}

void loose_search::CollectMargins(size_t block, loose_path& out) {
    const size_t first = block * blockLength;
    for (size_t t = std::min(first + blockLength, count); t-- > first;) {
        const size_t row = t - first;
        JudgeWords(rows.wordEnds.data() + row * numWords,
                   rows.junctions.data() + row * numJunctions);
        Retreat(t);
    }
    if (block == 0) {
        JudgeWords(nullptr, Begin().junctions.data());
        for (size_t word = 0; word < numWords; ++word) {
            out.margins.push_back(through[word] - past[word]);
        }
    }
}

bool loose_search::Run(const std::function<bool(double)>& isCancelled, loose_path& out) {
    out = {};
    out.states.resize(count);
    checkpoints.push_back(Begin());
    scratch = checkpoints.front();
    place_scores from = scratch;
    const size_t blocks = (count + blockLength - 1) / blockLength;
    for (size_t t = 0; t < count; ++t) {
        if (t > 0 && t % blockLength == 0) {
            checkpoints.push_back(from);
        }
        Advance(t, from, scratch, t % blockLength);
        std::swap(from, scratch);
        if (t % kCancelInterval == 0 &&
            isCancelled(0.5 * static_cast<double>(t) / static_cast<double>(count))) {
            return false;
        }
    }
    out.score = from.junctions.back();
    place = static_cast<uint32_t>(numJunctions - 1);
    EndBackward();
    for (size_t block = blocks; block-- > 0;) {
        if (block + 1 < blocks) { // the rows of the last one are there still
            FillBlock(block);
        }
        TraceBack(block, out);
        CollectMargins(block, out);
        const double left = static_cast<double>(block) / static_cast<double>(blocks);
        if (isCancelled(1.0 - 0.5 * left)) {
            return false;
        }
    }
    return true;
}

} // namespace

bool FindLoosePath(const word_chain& chain, const state_scores& scores,
                   std::span<const float> fillerScores, const departure_costs& costs,
                   const std::function<bool(double)>& isCancelled, loose_path& out,
                   size_t blockBytes) {
    if (scores.GetCount() == 0) {
        return true;
    }
    return loose_search(chain, scores, fillerScores, costs, blockBytes).Run(isCancelled, out);
}

} // namespace tessarin
