#include "recognition/loose/text_follower.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include "model/accoustic_hmm.h"
#include "recognition/loose/text_probe.h"
#include "recognition/loose/word_chain.h"

namespace tessarin {
namespace {

/// Words on each side of a cut, and the mean of their margins, each at most kMostMargin, from which
/// they are sure. In an hour of dialogue by voices that the model does not know, 46 of a hundred
/// places between right words are surer than that, and one of two thousand between words that a
/// missing stretch of text forced onto other audio. A margin alone says little: skipping a word
/// costs thirty, so that much is left to a wrong one, too.
constexpr size_t kSureWords = 6;
constexpr double kSureMargin = 70.0;
constexpr double kMostMargin = 100.0;

/// States of the text in which a piece is searched: hurried speech has about 0.6 an observation.
size_t StatesFor(size_t observations) {
    return 600 + observations * 6 / 10;
}

bool Never(double) {
    return false;
}

} // namespace

text_follower::text_follower(const CAccousticHMM& acousticModel, const word_chain& wordChain,
                             size_t observations, const follower_limits& followerLimits)
    : model(acousticModel), chain(wordChain), limits(followerLimits), total(observations),
      width(static_cast<size_t>(acousticModel.descriptor.numFeatures)), scores(acousticModel),
      nextLength(followerLimits.piece) {
    settled.margins.assign(chain.GetWords().size(), -std::numeric_limits<double>::infinity());
}

void text_follower::Add(const float* x) {
    pending.insert(pending.end(), x, x + width);
    ++received;
    if (pending.size() == log_scoring::kTogether * width) {
        ScorePending();
        if (scores.GetCount() >= nextLength && Left() > limits.whole) {
            Follow();
        }
    }
}

void text_follower::ScorePending() {
    if (pending.size() == log_scoring::kTogether * width) {
        const float* x[log_scoring::kTogether];
        for (size_t i = 0; i < log_scoring::kTogether; ++i) {
            x[i] = pending.data() + i * width;
        }
        scores.AddTogether(x);
    } else {
        for (size_t at = 0; at < pending.size(); at += width) {
            scores.Add(pending.data() + at);
        }
    }
    pending.clear();
}

void text_follower::Hear() {
    heard = HearPhones(model, scores);
    heard_distance all = distance;
    all.Add(model, scores, heard, scores.GetCount());
    spread = all.Spread();
}

size_t text_follower::StatesUpTo(size_t firstWord, size_t endWord) const {
    return chain.JunctionEnd(endWord) - chain.JunctionBegin(firstWord);
}

/// The word before which a part of the text ends that begins at `firstWord` and has about so many
/// states.
size_t text_follower::WindowEnd(size_t firstWord, size_t states) const {
    const auto rest = std::span(chain.GetWords()).subspan(firstWord);
    const size_t end = chain.JunctionBegin(firstWord) + states;
    const auto found = std::ranges::lower_bound(rest, end, {}, &word_chain::word::first);
    return firstWord + static_cast<size_t>(found - rest.begin());
}

bool text_follower::SearchPiece(chain_stretch stretch,
                                const std::function<bool(double)>& isCancelled) {
    searched = stretch;
    if (!FindLoosePath(chain, stretch, scores, heard.scores, departure_costs::ForSpread(spread),
                       isCancelled, path)) {
        return false;
    }
    FindSpans();
    return true;
}

void text_follower::FindSpans() {
    spans.assign(searched.endWord - searched.firstWord, {});
    fillersBefore.assign(1, 0);
    for (size_t t = 0; t < path.states.size(); ++t) {
        const uint32_t state = path.states[t];
        const bool isFiller = state >= loose_path::kFiller;
        fillersBefore.push_back(fillersBefore.back() + (isFiller ? 1 : 0));
        const size_t word = isFiller ? chain.GetWords().size() : chain.WordOf(state);
        if (word < chain.GetWords().size()) {
            word_span& span = spans[word - searched.firstWord];
            span.first = std::min(span.first, t);
            span.end = t + 1;
        }
    }
}

/// Whether some words are surely said, without other speech between them. Pauses that must not be
/// left out are on every path and are no evidence.
bool text_follower::IsSureRun(size_t begin, size_t end) const {
    double sum = 0.0;
    size_t judged = 0;
    for (size_t word = begin; word < end; ++word) {
        const double margin = path.margins[word] / spread;
        if (!spans[word].isSaid() || !(margin >= 0.0)) {
            return false;
        }
        if (chain.GetWords()[searched.firstWord + word].isSkippable) {
            sum += std::min(margin, kMostMargin);
            ++judged;
        }
    }
    return 3 * judged >= 2 * (end - begin) && sum >= kSureMargin * static_cast<double>(judged) &&
           fillersBefore[spans[begin].first] == fillersBefore[spans[end - 1].end];
}

/// The last place between words that are sure on both sides.
std::optional<text_follower::cut> text_follower::FindCut() const {
    for (size_t word = spans.size(); word >= 2 * kSureWords; --word) {
        const size_t middle = word - kSureWords;
        if (IsSureRun(middle - kSureWords, word) &&
            spans[middle - 1].end + limits.tail <= path.states.size()) {
            return cut{spans[middle - 1].end, searched.firstWord + middle};
        }
    }
    return std::nullopt;
}

/// The end of the last words that are sure, whatever comes after.
std::optional<text_follower::cut> text_follower::FindLastSure() const {
    for (size_t word = spans.size(); word >= 2 * kSureWords; --word) {
        if (IsSureRun(word - 2 * kSureWords, word)) {
            return cut{spans[word - 1].end, searched.firstWord + word};
        }
    }
    return std::nullopt;
}

double text_follower::TextFit(size_t t) const {
    return static_cast<double>(scores[t][chain.GetModelState(path.states[t])] - heard.scores[t]);
}

/// The path up to a cut is final, and forgotten but for its result.
void text_follower::Settle(const cut& at) {
    for (size_t t = 0; t < at.observation; ++t) {
        settled.states.push_back(path.states[t]);
        if (path.states[t] < loose_path::kFiller && !heard.IsSilence(t, model.numStates)) {
            settled.fit += TextFit(t);
            ++settled.spoken;
        }
    }
    for (size_t word = searched.firstWord; word < at.junction; ++word) {
        settled.margins[word] = path.margins[word - searched.firstWord] / spread;
    }
    nextWord = at.junction;
    SettleHeard(at.observation);
}

void text_follower::SettleAsOther(size_t observations) {
    settled.states.resize(settled.states.size() + observations,
                          loose_path::kFiller + static_cast<uint32_t>(nextWord));
    SettleHeard(observations);
}

void text_follower::SettleHeard(size_t observations) {
    settled.heardStates.insert(settled.heardStates.end(), heard.states.begin(),
                               heard.states.begin() + static_cast<std::ptrdiff_t>(observations));
    distance.Add(model, scores, heard, observations);
    if (!isWhole) { // AboveHeard is still to come
        scores.DropFirst(observations);
    }
    nextLength = std::max(limits.piece, scores.GetCount() + 2 * limits.tail);
}

/// Whether the path comes near the end of the part of the text that was searched.
bool text_follower::IsAtEdge() const {
    const size_t edge = spans.size() / 16 + 1;
    return searched.endWord < chain.GetWords().size() &&
           std::any_of(spans.end() - static_cast<std::ptrdiff_t>(std::min(edge, spans.size())),
                       spans.end(), [](const word_span& span) { return span.isSaid(); });
}

/// Looks for a cut in what waits.
void text_follower::Follow() {
    if (isLost) {
        Lose();
        return;
    }
    Hear();
    const size_t count = scores.GetCount();
    size_t states = StatesFor(count);
    do {
        (void)SearchPiece({nextWord, WindowEnd(nextWord, states), false, true}, Never);
        states *= 2;
    } while (IsAtEdge() && states * count <= limits.cells);
    if (const std::optional<cut> at = FindCut()) {
        Settle(*at);
    } else if (count < limits.mostPiece) {
        nextLength = std::min(2 * count, limits.mostPiece);
    } else {
        if (const std::optional<cut> sure = FindLastSure()) {
            Settle(*sure);
        }
        isLost = true;
        Lose();
    }
}

/// Looks for a text that is lost, and gives up the oldest part of what waits when it is not found.
void text_follower::Lose() {
    Hear();
    if (!FindAgain() && scores.GetCount() + limits.piece > limits.mostPiece) {
        SettleAsOther(std::min(limits.piece, scores.GetCount()));
    }
    nextLength = isLost ? scores.GetCount() + limits.piece : nextLength;
}

bool text_follower::FindAgain() {
    const size_t count = scores.GetCount();
    const size_t first = count - std::min(count, limits.probe);
    const uint64_t cells = uint64_t{count - first} * StatesUpTo(nextWord, chain.GetWords().size());
    if (probed + cells > limits.probeCells + limits.probeRate * received) {
        return false;
    }
    probed += cells;
    const std::optional<size_t> found = FindInText(chain, nextWord, scores, first, heard.scores,
                                                   departure_costs::ForSpread(spread));
    if (!found) {
        return false;
    }
    // What waits may have words before the place that was found, and has it in its midst.
    const size_t begin = chain.JunctionBegin(*found);
    const size_t back = StatesFor(count);
    const size_t start = std::max(nextWord, WindowEnd(0, begin > back ? begin - back : 0));
    (void)SearchPiece({start, WindowEnd(*found, StatesFor(0)), start > nextWord, true}, Never);
    std::optional<cut> at = FindCut();
    at = at ? at : FindLastSure();
    if (!at) {
        return false;
    }
    isLost = false;
    Settle(*at);
    return true;
}

bool text_follower::Finish(const std::function<bool(double)>& isCancelled) {
    ScorePending();
    Hear();
    if (isLost && scores.GetCount() > 0) {
        if (FindAgain()) {
            Hear();
        } else {
            SettleAsOther(scores.GetCount());
        }
    }
    if (const size_t count = scores.GetCount(); count > 0) {
        size_t endWord = chain.GetWords().size();
        const auto states = static_cast<size_t>(limits.cells / count);
        if (StatesUpTo(nextWord, endWord) > states) {
            endWord = WindowEnd(nextWord, states);
        }
        isWhole = settled.states.empty();
        if (!SearchPiece({nextWord, endWord, false, false}, isCancelled)) {
            return false;
        }
        if (std::isfinite(path.score)) {
            Settle({count, endWord});
        } else if (!isWhole) {
            SettleAsOther(count);
        }
    }
    settled.isFound = !settled.states.empty();
    settled.spread = distance.Spread();
    return true;
}

std::optional<double> text_follower::AboveHeard(size_t observation, size_t modelState) const {
    if (!isWhole) {
        return std::nullopt;
    }
    return static_cast<double>(scores[observation][modelState] - heard.scores[observation]);
}

} // namespace tessarin
