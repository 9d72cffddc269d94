#include "recognition/loose/word_chain.h"

#include <algorithm>
#include <cmath>

#include "model/accoustic_hmm.h"
#include "tessarin/transcriber.h"

namespace tessarin {
namespace {

float LeavingLog(const CAccousticHMM& model, const state_rec& record) {
    const std::vector<float>& row = model.models[record.phone].states[record.state].transitions;
    return std::log(std::max(1.0f - row[record.state], 1e-15f));
}

/// The words that the graph itself has ways past, by the arcs that lead over them: where such ways
/// begin less where they end, so that an arc over many words costs as much as one over a single.
class passed_words {
public:
    explicit passed_words(size_t words) : changes(words + 1) {}

    /// An arc from the block `from` to a later one.
    void Add(size_t from, size_t to) {
        const size_t first = (from + 1) / 2; // the first word after the place that it leaves
        const size_t end = to / 2;
        if (first < end) {
            ++changes[first];
            --changes[end];
        }
    }
    void Mark(std::vector<word_chain::word>& words) const {
        int64_t ways = 0;
        for (size_t i = 0; i < words.size(); ++i) {
            ways += changes[i];
            words[i].isOptional = ways > 0;
        }
    }

private:
    std::vector<int64_t> changes;
};

} // namespace

word_chain::word_chain(const CAccousticHMM& model, const state_rec* const* graph,
                       uint32_t positions, std::span<const CTxMarker> tokens) {
    const auto statesPerPhone = static_cast<uint32_t>(model.numStates);
    const uint32_t numStates = positions * statesPerPhone;
    FindWords(tokens, statesPerPhone);
    const std::vector<uint32_t> blocks = FindBlocks(numStates);
    passed_words passed(words.size());
    std::vector<bool> isExit(numStates);
    modelStates.reserve(numStates);
    entries.reserve(numStates);
    arcBegins.reserve(size_t{numStates} + 1);
    arcBegins.push_back(0);
    for (uint32_t state = 0; state < numStates; ++state) {
        const state_rec& record = *graph[state];
        AddState(record, state, blocks, statesPerPhone);
        for (uint32_t i = 0; i < record.predecessors; ++i) {
            const uint32_t from = record.Arcs()[i].state;
            if (blocks[from] != blocks[state]) {
                passed.Add(blocks[from], blocks[state]);
                isExit[from] = isExit[from] || blocks[from] % 2 == 1;
            }
        }
        if (blocks[state] % 2 == 0 && state % statesPerPhone == statesPerPhone - 1) {
            isExit[state] = true; // of a silence
        }
    }
    passed.Mark(words);
    ListExits(model, graph, blocks, isExit);
}

void word_chain::ListExits(const CAccousticHMM& model, const state_rec* const* graph,
                           std::span<const uint32_t> blocks, const std::vector<bool>& isExit) {
    for (uint32_t state = 0; state < blocks.size(); ++state) {
        if (!isExit[state]) {
            continue;
        }
        const bool isWord = blocks[state] % 2 == 1;
        std::vector<uint32_t>& begins = isWord ? wordExitBegins : silenceExitBegins;
        std::vector<exit>& exits = isWord ? wordExits : silenceExits;
        const uint32_t index = blocks[state] / 2;
        begins.resize(std::max<size_t>(begins.size(), size_t{index} + 1),
                      static_cast<uint32_t>(exits.size()));
        exits.push_back({state, LeavingLog(model, *graph[state])});
    }
    wordExitBegins.resize(words.size() + 1, static_cast<uint32_t>(wordExits.size()));
    silenceExitBegins.resize(words.size() + 2, static_cast<uint32_t>(silenceExits.size()));
}

std::vector<uint32_t> word_chain::FindBlocks(uint32_t numStates) const {
    std::vector<uint32_t> blocks(numStates);
    uint32_t index = 0; // of the first word that does not end before the state
    for (uint32_t state = 0; state < numStates; ++state) {
        while (index < words.size() && words[index].end <= state) {
            ++index;
        }
        const bool isInside = index < words.size() && words[index].first <= state;
        blocks[state] = 2 * index + (isInside ? 1 : 0);
    }
    return blocks;
}

size_t word_chain::WordOf(uint32_t state) const {
    const auto after = std::ranges::upper_bound(words, state, {}, &word::first);
    const bool isInside = after != words.begin() && state < (after - 1)->end;
    return static_cast<size_t>((isInside ? after - 1 : words.end()) - words.begin());
}

bool word_chain::IsTooLongFor(size_t observations) const {
    const auto needed = std::ranges::count_if(
        words, [](const word& each) { return !each.isSkippable && !each.isOptional; });
    return static_cast<size_t>(needed) > observations;
}

void word_chain::FindWords(std::span<const CTxMarker> tokens, uint32_t statesPerPhone) {
    for (size_t i = 0; i < tokens.size(); ++i) {
        const CTxMarker& token = tokens[i];
        const bool hasPhonemes = token.group_count > 0 && token.groups != nullptr;
        if (hasPhonemes && token.first_state < token.last_state) {
            const bool isPause = (token.flags & kPauseTokenFlag) != 0;
            words.push_back({token.first_state * statesPerPhone, token.last_state * statesPerPhone,
                             static_cast<uint32_t>(i), token.kind == kWordToken && !isPause,
                             false});
        }
    }
}

void word_chain::AddState(const state_rec& record, uint32_t state, std::span<const uint32_t> blocks,
                          uint32_t statesPerPhone) {
    modelStates.push_back(static_cast<uint16_t>(record.phone * statesPerPhone + record.state));
    const size_t block = blocks[state];
    const bool isWord = block % 2 == 1;
    const uint32_t position = state / statesPerPhone;
    // The chain of a junction's silences is a choice among them here, at any number.
    const auto isInside = [&](uint32_t from) {
        return isWord ? from >= words[block / 2].first : from / statesPerPhone == position;
    };
    bool isEntered = state == 0;
    for (uint32_t i = 0; i < record.predecessors; ++i) {
        const state_arc& each = record.Arcs()[i];
        if (!isInside(each.state)) {
            isEntered = true;
        } else if (arcs.size() - arcBegins.back() < kMostArcs) {
            arcs.push_back({each.state, std::log(std::max(each.probability, 1e-15f))});
        }
    }
    // The first word of a graph without a silence before it has no arc that leads into it.
    isEntered = isEntered || (isWord && state == words[block / 2].first);
    entries.push_back(isEntered ? static_cast<uint32_t>(block / 2) : kNoJunction);
    arcBegins.push_back(static_cast<uint32_t>(arcs.size()));
}

} // namespace tessarin
