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

/// The states of a stretch, laid out for speed. Nearly all are entered from themselves and from
/// either the state before or a junction; what they are not entered from has kNever.
struct state_table {
    struct first_state {
        uint32_t state;
        uint32_t junction;
    };

    std::vector<double> stay;
    std::vector<double> step;
    std::vector<uint16_t> modelStates;
    std::vector<first_state> firsts; // entered from a junction and from themselves
    std::vector<uint32_t> others;    // entered from anywhere in their word
};

/// What the way back needs of the observations of a block.
struct block_rows {
    std::vector<uint8_t> arcs;        // number of the arc into each state, or kFromJunction
    std::vector<uint8_t> fillerStays; // of each junction
    std::vector<uint32_t> sources;    // of each junction: state of an exit, kFromFiller, kFromSkip
    std::vector<double> wordEnds;     // best score of each word's exits
    std::vector<double> junctions;    // scores of the junctions
};

/// One run of the search. States, words and junctions count from the first of the stretch.
class loose_search {
public:
    loose_search(const word_chain& wordChain, const chain_stretch& chainStretch,
                 const state_scores& stateScores, std::span<const float> fillers,
                 const departure_costs& departureCosts, size_t blockBytes);

    bool Run(const std::function<bool(double)>& isCancelled, loose_path& out);

private:
    place_scores Begin() const;
    void Advance(size_t t, const place_scores& from, place_scores& to, size_t row);
    void EnterStates(size_t t, const place_scores& from, place_scores& to, size_t row);
    double EnterOther(uint32_t state, const place_scores& from, uint8_t& source) const;
    void SortStates();
    void FinishJunctions(place_scores& to, size_t row);
    void SkipWords(std::vector<double>& junctions, uint32_t* sources) const;
    double SkipCost(size_t word) const;

    void FillBlock(size_t block);
    void BeginBackward(const place_scores& last, loose_path& out);
    void TraceBack(size_t block, loose_path& out);
    void CollectMargins(size_t block, loose_path& out);
    void Retreat(size_t t);
    void LeaveStates(double end);
    void LeaveByExits(std::span<const word_chain::exit>, double score);
    void EnterFillers(size_t t);
    void JudgeWords(const double* wordEnds, const double* junctions);

    uint32_t EntryOf(uint32_t state) const {
        const uint32_t entry = chain.GetEntry(firstState + state);
        return entry != word_chain::kNoJunction ? entry - firstWord : entry;
    }

    const word_chain& chain;
    const chain_stretch stretch;
    const state_scores& scores;
    const std::span<const float> fillerScores;
    const departure_costs costs;
    const uint32_t firstWord;
    const uint32_t firstState;
    const size_t count;
    const size_t numStates;
    const size_t numWords;
    const size_t numJunctions;
    size_t blockLength;

    state_table table;
    std::vector<double> skipCosts;         // of each word
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

/// Observations of a block: all where their rows fit, else those that make rows and checkpoints,
/// each of which takes about eight times a row, smallest together.
size_t BlockLength(size_t count, size_t rowBytes, size_t blockBytes) {
    constexpr double kRowsPerCheckpoint = 8.0;
    if (count * rowBytes <= blockBytes) {
        return std::max<size_t>(count, 1);
    }
    return std::clamp<size_t>(
        static_cast<size_t>(std::sqrt(kRowsPerCheckpoint * static_cast<double>(count))), 1, count);
}

loose_search::loose_search(const word_chain& wordChain, const chain_stretch& chainStretch,
                           const state_scores& stateScores, std::span<const float> fillers,
                           const departure_costs& departureCosts, size_t blockBytes)
    : chain(wordChain), stretch(chainStretch), scores(stateScores), fillerScores(fillers),
      costs(departureCosts), firstWord(static_cast<uint32_t>(chainStretch.firstWord)),
      firstState(wordChain.JunctionBegin(chainStretch.firstWord)), count(fillers.size()),
      numStates(wordChain.JunctionEnd(chainStretch.endWord) - firstState),
      numWords(chainStretch.endWord - chainStretch.firstWord), numJunctions(numWords + 1) {
    const size_t rowBytes = numStates + numJunctions * (sizeof(uint32_t) + 1 + sizeof(double)) +
                            numWords * sizeof(double);
    blockLength = BlockLength(count, rowBytes, blockBytes);
    const size_t length = std::min(blockLength, count);
    rows.arcs.resize(length * numStates);
    rows.fillerStays.resize(length * numJunctions);
    rows.sources.resize(length * numJunctions);
    rows.junctions.resize(length * numJunctions);
    rows.wordEnds.resize(length * numWords);
    through.assign(numWords, kNever);
    past.assign(numWords, kNever);
    rest.resize(numStates);
    for (size_t word = 0; word < numWords; ++word) {
        skipCosts.push_back(SkipCost(word));
    }
    SortStates();
}

void loose_search::SortStates() {
    table.stay.assign(numStates + 1, kNever); // one more, which the last state leads to
    table.step.assign(numStates + 1, kNever);
    for (uint32_t state = 0; state < numStates; ++state) {
        const auto into = chain.Into(firstState + state);
        const uint32_t entry = EntryOf(state);
        table.modelStates.push_back(chain.GetModelState(firstState + state));
        const bool isEntered = entry != word_chain::kNoJunction;
        const bool staysLast = !into.empty() && into.back().from == firstState + state;
        if (isEntered && into.size() == 1 && staysLast) {
            table.firsts.push_back({state, entry});
            table.stay[state] = static_cast<double>(into[0].log);
        } else if (!isEntered && into.size() == 2 && into[0].from + 1 == firstState + state &&
                   staysLast) {
            table.step[state] = static_cast<double>(into[0].log);
            table.stay[state] = static_cast<double>(into[1].log);
        } else {
            table.others.push_back(state);
        }
    }
}

double loose_search::SkipCost(size_t word) const {
    const word_chain::word& each = chain.GetWords()[firstWord + word];
    if (each.isOptional) {
        return 0.0;
    }
    return each.isSkippable ? costs.skip : -kNever;
}

void loose_search::SkipWords(std::vector<double>& junctions, uint32_t* sources) const {
    for (size_t word = 0; word < numWords; ++word) {
        const double skipped = junctions[word] - skipCosts[word];
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
                       std::vector<double>(numJunctions, stretch.startsAnywhere ? 0.0 : kNever)};
    begin.junctions[0] = 0.0;
    SkipWords(begin.junctions, nullptr);
    return begin;
}

void loose_search::EnterStates(size_t t, const place_scores& from, place_scores& to, size_t row) {
    const float* const output = scores[t];
    uint8_t* const arcs = rows.arcs.data() + row * numStates;
    // Held here, since what is written as bytes might be anything, these pointers included.
    double* const after = to.states.data();
    const double* const own = from.states.data();
    const double* const stay = table.stay.data();
    const double* const step = table.step.data();
    const uint16_t* const modelStates = table.modelStates.data();
    double before = kNever; // the score of the state before
    for (size_t state = 0; state < numStates; ++state) {
        const double stayed = own[state] + stay[state];
        const double stepped = before + step[state];
        before = own[state];
        arcs[state] = stayed > stepped ? 1 : 0;
        after[state] = std::max(stepped, stayed) + static_cast<double>(output[modelStates[state]]);
    }
    for (const auto& [state, junction] : table.firsts) {
        const double stayed = from.states[state] + table.stay[state];
        const double entered = from.junctions[junction];
        arcs[state] = stayed > entered ? 0 : kFromJunction;
        after[state] = std::max(entered, stayed) + static_cast<double>(output[modelStates[state]]);
    }
    for (const uint32_t state : table.others) {
        after[state] =
            EnterOther(state, from, arcs[state]) + static_cast<double>(output[modelStates[state]]);
    }
}

double loose_search::EnterOther(uint32_t state, const place_scores& from, uint8_t& source) const {
    const uint32_t entry = EntryOf(state);
    double best = entry != word_chain::kNoJunction ? from.junctions[entry] : kNever;
    source = kFromJunction;
    uint8_t number = 0;
    for (const word_chain::arc& arc : chain.Into(firstState + state)) {
        const double score = from.states[arc.from - firstState] + static_cast<double>(arc.log);
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
                const uint32_t state = exit.state - firstState;
                const double score = to.states[state] + static_cast<double>(exit.log);
                if (score > best) {
                    best = score;
                    source = state;
                }
            }
        };
        if (junction > 0) {
            leave(chain.WordExits(firstWord + junction - 1));
            wordEnds[junction - 1] = best;
        }
        leave(chain.SilenceExits(firstWord + junction));
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
        const bool isFiller = place >= loose_path::kFiller;
        out.states[t] = place + (isFiller ? firstWord : firstState);
        if (isFiller) {
            const uint32_t junction = place - loose_path::kFiller;
            if (rows.fillerStays[row * numJunctions + junction] == 0) {
                place = junction;
                isAtJunction = true;
            }
            continue;
        }
        const uint8_t arc = rows.arcs[row * numStates + place];
        isAtJunction = arc == kFromJunction;
        place =
            isAtJunction ? EntryOf(place) : chain.Into(firstState + place)[arc].from - firstState;
    }
}

/// Where the path ends, and what is still to come after the last observation.
void loose_search::BeginBackward(const place_scores& last, loose_path& out) {
    out.score = last.junctions.back();
    place = static_cast<uint32_t>(numJunctions - 1);
    const double end = stretch.endsAnywhere ? 0.0 : kNever;
    backward = {std::vector<double>(numStates, kNever), std::vector<double>(numJunctions, kNever),
                std::vector<double>(numJunctions, end)};
    backward.junctions.back() = 0.0;
    for (size_t word = numWords; word-- > 0;) {
        backward.junctions[word] =
            std::max(backward.junctions[word], backward.junctions[word + 1] - skipCosts[word]);
    }
    if (!stretch.endsAnywhere) {
        return;
    }
    double ended = kNever; // of paths that end before a word
    for (size_t word = 0; word < numWords; ++word) {
        ended = std::max(ended, last.junctions[word]);
        past[word] = std::max(past[word], ended);
    }
    const auto junction = std::ranges::max_element(last.junctions);
    place = static_cast<uint32_t>(junction - last.junctions.begin());
    out.score = *junction;
    const auto state = std::ranges::max_element(last.states);
    if (state != last.states.end() && *state > out.score) {
        place = static_cast<uint32_t>(state - last.states.begin());
        isAtJunction = false;
        out.score = *state;
    }
}

void loose_search::LeaveByExits(std::span<const word_chain::exit> exits, double score) {
    for (const word_chain::exit& exit : exits) {
        double& left = rest[exit.state - firstState];
        left = std::max(left, score + static_cast<double>(exit.log));
    }
}

/// What is still to come for a path in each state; `end` for one that ends there.
void loose_search::LeaveStates(double end) {
    double stepped = kNever; // into the state after
    for (size_t state = numStates; state-- > 0;) {
        const double next = backward.states[state];
        rest[state] = std::max({end, next + table.stay[state], stepped});
        stepped = next + table.step[state];
    }
    for (const uint32_t state : table.others) {
        for (const word_chain::arc& arc : chain.Into(firstState + state)) {
            double& left = rest[arc.from - firstState];
            left = std::max(left, backward.states[state] + static_cast<double>(arc.log));
        }
    }
    for (size_t junction = 0; junction < numJunctions; ++junction) {
        if (junction > 0) {
            LeaveByExits(chain.WordExits(firstWord + junction - 1), backward.junctions[junction]);
        }
        LeaveByExits(chain.SilenceExits(firstWord + junction), backward.junctions[junction]);
    }
}

void loose_search::EnterFillers(size_t t) {
    const double step = static_cast<double>(fillerScores[t]) - costs.fillerStep;
    for (size_t junction = 0; junction < numJunctions; ++junction) {
        backward.fillers[junction] =
            std::max(backward.fillers[junction], backward.junctions[junction]) + step;
        backward.junctions[junction] = backward.fillers[junction] - costs.fillerEntry;
    }
}

/// From after observation `t` to before it: `backward` has the best that is still to come for a
/// path that is about to enter each place at the next observation, and goes back by one.
void loose_search::Retreat(size_t t) {
    LeaveStates(stretch.endsAnywhere && t + 1 == count ? 0.0 : kNever);
    EnterFillers(t);
    const float* const output = scores[t];
    for (size_t state = 0; state < numStates; ++state) {
        backward.states[state] =
            rest[state] + static_cast<double>(output[table.modelStates[state]]);
    }
    for (const auto& [state, junction] : table.firsts) {
        double& entered = backward.junctions[junction];
        entered = std::max(entered, backward.states[state]);
    }
    for (const uint32_t state : table.others) {
        if (const uint32_t entry = EntryOf(state); entry != word_chain::kNoJunction) {
            backward.junctions[entry] = std::max(backward.junctions[entry], backward.states[state]);
        }
    }
    for (size_t word = numWords; word-- > 0;) {
        backward.junctions[word] =
            std::max(backward.junctions[word], backward.junctions[word + 1] - skipCosts[word]);
    }
}

/// With `backward` after the observation whose scores are given.
void loose_search::JudgeWords(const double* wordEnds, const double* junctions) {
    for (size_t word = 0; word < numWords; ++word) {
        const double left = backward.junctions[word + 1];
        if (wordEnds != nullptr) {
            through[word] = std::max(through[word], wordEnds[word] + left);
        }
        past[word] = std::max(past[word], junctions[word] - skipCosts[word] + left);
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
        double later = kNever; // of paths that start after a word
        for (size_t word = numWords; stretch.startsAnywhere && word-- > 0;) {
            later = std::max(later, backward.junctions[word + 1]);
            past[word] = std::max(past[word], later);
        }
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
    BeginBackward(from, out);
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

bool FindLoosePath(const word_chain& chain, const chain_stretch& stretch,
                   const state_scores& scores, std::span<const float> fillerScores,
                   const departure_costs& costs, const std::function<bool(double)>& isCancelled,
                   loose_path& out, size_t blockBytes) {
    if (fillerScores.empty()) {
        return true;
    }
    return loose_search(chain, stretch, scores, fillerScores, costs, blockBytes)
        .Run(isCancelled, out);
}

} // namespace tessarin
