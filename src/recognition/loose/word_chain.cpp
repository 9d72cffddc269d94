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

} // namespace

word_chain::word_chain(const CAccousticHMM& model, const state_rec* const* graph,
                       uint32_t positions, std::span<const CTxMarker> tokens) {
    const auto statesPerPhone = static_cast<uint32_t>(model.numStates);
    const uint32_t numStates = positions * statesPerPhone;
    FindWords(tokens, statesPerPhone);
    wordExits.resize(words.size());
    silenceExits.resize(words.size() + 1);
    arcBegins.push_back(0);
    for (uint32_t state = 0; state < numStates; ++state) {
        AddState(model, *graph[state], state, statesPerPhone);
        const size_t block = BlockOf(state);
        for (uint32_t i = 0; i < graph[state]->predecessors; ++i) {
            AddExit(model, graph, graph[state]->Arcs()[i].state, block);
        }
        const bool isSilence = block % 2 == 0;
        if (isSilence && state % statesPerPhone == statesPerPhone - 1) {
            silenceExits[block / 2].push_back({state, LeavingLog(model, *graph[state])});
        }
    }
    for (std::vector<exit>& exits : wordExits) {
        std::ranges::sort(exits, {}, &exit::state);
    }
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

/// Twice the number of a junction for its silences, and one more for the word after it.
size_t word_chain::BlockOf(uint32_t state) const {
    const auto after = std::ranges::upper_bound(words, state, {}, &word::first);
    const auto before = static_cast<size_t>(after - words.begin());
    return before > 0 && state < words[before - 1].end ? 2 * before - 1 : 2 * before;
}

void word_chain::AddState(const CAccousticHMM& model, const state_rec& record, uint32_t state,
                          uint32_t statesPerPhone) {
    modelStates.push_back(static_cast<uint16_t>(
        record.phone * static_cast<uint32_t>(model.numStates) + record.state));
    const size_t block = BlockOf(state);
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
    arcBegins.push_back(arcs.size());
}

/// Notes an arc from the state `from` to a later block.
void word_chain::AddExit(const CAccousticHMM& model, const state_rec* const* graph, uint32_t from,
                         size_t toBlock) {
    const size_t fromBlock = BlockOf(from);
    if (fromBlock == toBlock) {
        return;
    }
    for (size_t passed = fromBlock / 2 + 1; 2 * passed + 1 < toBlock; ++passed) {
        words[passed].isOptional = true;
    }
    if (fromBlock % 2 == 0) {
        if (toBlock > fromBlock + 1) {
            words[fromBlock / 2].isOptional = true;
        }
        return;
    }
    std::vector<exit>& exits = wordExits[fromBlock / 2];
    if (std::ranges::find(exits, from, &exit::state) == exits.end()) {
        exits.push_back({from, LeavingLog(model, *graph[from])});
    }
}

} // namespace tessarin
