#include "recognition/loose/region_match.h"

#include <algorithm>
#include <cmath>

#include "base/text_copy.h"
#include "model/accoustic_hmm.h"
#include "recognition/loose/heard_phones.h"
#include "recognition/loose/loose_viterbi.h"
#include "recognition/loose/word_chain.h"
#include "recognition/markers/amplitude_scale.h"
#include "recognition/markers/time_base.h"

namespace tessarin {
namespace {

/// Observations of other speech from which a path departs from the text; less is a breath.
constexpr size_t kLeastFiller = 20;
/// Phonemes of a word that, when it alone is skipped and that by little evidence, is more often
/// slurred than missing: "and the" may be said without any sound of "the".
constexpr uint32_t kMostSlurred = 2;
constexpr double kSlurredMargin = -40.0;
constexpr double kMostMargin = 1e6;
/// Of states times observations: some seconds of work.
constexpr uint64_t kMostCells = uint64_t{3} << 30;
constexpr uint32_t kNowhere = UINT32_MAX;
constexpr uint32_t kSilence = 0;

/// One search through a region.
struct region_search {
    region_search(const region_input& regionInput, region_match& result)
        : input(regionInput), chain(input.model, input.graph, input.positions, input.tokens),
          out(result), perPhone(static_cast<uint32_t>(input.model.numStates)) {}

    bool Run(const std::function<bool(double)>& isCancelled);
    size_t WordOf(uint32_t state) const;
    bool IsShort(size_t index) const;
    bool IsSlurred(size_t index) const;
    bool SkipsWords(const std::vector<bool>& isSaid) const;
    void ListWords();
    void ListStretches();
    void WritePhones();
    void WritePhone(size_t first, size_t end, uint32_t phone, uint32_t position);
    void CollectEvidence();
    double PlainScore(size_t t) const;
    void CollectDurations();

    /// The junction of other speech at an observation, or kNowhere in the text.
    uint32_t FillerAt(size_t t) const {
        return path.states[t] >= loose_path::kFiller ? path.states[t] - loose_path::kFiller
                                                     : kNowhere;
    }
    bool IsHeard(size_t t) const { return !heard.IsSilence(t, input.model.numStates); }

    const region_input& input;
    const word_chain chain;
    region_match& out;
    const uint32_t perPhone;
    heard_phones heard;
    loose_path path;
};

bool region_search::Run(const std::function<bool(double)>& isCancelled) {
    heard = HearPhones(input.model, input.scores);
    out.spread = ScoreSpread(input.model, input.scores, heard);
    if (!FindLoosePath(chain, input.scores, heard.scores, departure_costs::ForSpread(out.spread),
                       isCancelled, path)) {
        return false;
    }
    out.isFound = std::isfinite(path.score);
    if (out.isFound) {
        ListWords();
        ListStretches();
        WritePhones();
        CollectEvidence();
    }
    return true;
}

/// The word that a state belongs to, or their number for a silence.
size_t region_search::WordOf(uint32_t state) const {
    const auto& words = chain.GetWords();
    const auto after = std::ranges::upper_bound(words, state, {}, &word_chain::word::first);
    const bool isInside = after != words.begin() && state < (after - 1)->end;
    return static_cast<size_t>((isInside ? after - 1 : words.end()) - words.begin());
}

void region_search::ListWords() {
    const auto& words = chain.GetWords();
    std::vector<bool> isOnPath(words.size() + 1);
    for (const uint32_t state : path.states) {
        if (state < loose_path::kFiller) {
            isOnPath[WordOf(state)] = true;
        }
    }
    for (size_t i = 0; i < words.size(); ++i) {
        if (!words[i].isSkippable) {
            continue;
        }
        // The graph's own way past a word is not a departure from the text.
        const bool isSaid = isOnPath[i] || words[i].isOptional;
        isOnPath[i] = isSaid;
        const double margin = std::isnan(path.margins[i]) ? -kMostMargin : path.margins[i];
        out.words.push_back(
            {words[i].token, isSaid, std::clamp(margin / out.spread, -kMostMargin, kMostMargin)});
    }
    out.departs = out.departs || SkipsWords(isOnPath);
}

/// Whether a word can be said with few phonemes.
bool region_search::IsShort(size_t index) const {
    const word_chain::word& word = chain.GetWords()[index];
    // The fewest states on the way to each state of the word; an arc never leads back.
    std::vector<uint32_t> states(word.end - word.first, UINT32_MAX / 2);
    for (uint32_t state = word.first; state < word.end; ++state) {
        uint32_t& fewest = states[state - word.first];
        fewest = chain.GetEntry(state) != word_chain::kNoJunction ? 1 : fewest;
        for (const word_chain::arc& arc : chain.Into(state)) {
            if (arc.from >= word.first && arc.from < state) {
                fewest = std::min(fewest, states[arc.from - word.first] + 1);
            }
        }
    }
    return std::ranges::any_of(chain.WordExits(index), [&](const word_chain::exit& exit) {
        return states[exit.state - word.first] <= kMostSlurred * perPhone;
    });
}

bool region_search::IsSlurred(size_t index) const {
    return path.margins[index] > kSlurredMargin * out.spread && IsShort(index);
}

/// Whether words are skipped that cannot just be slurred.
bool region_search::SkipsWords(const std::vector<bool>& isSaid) const {
    const auto& words = chain.GetWords();
    for (size_t i = 0; i < words.size(); ++i) {
        const bool isNextSkipped = i + 1 < words.size() && !isSaid[i + 1];
        if (words[i].isSkippable && !isSaid[i] && (isNextSkipped || !IsSlurred(i))) {
            return true;
        }
    }
    return false;
}

/// Runs of other speech, without the silence around them; those with nothing else are none.
void region_search::ListStretches() {
    const auto& words = chain.GetWords();
    size_t fillers = 0;
    for (size_t t = 0; t < path.states.size();) {
        const uint32_t junction = FillerAt(t);
        size_t end = t + 1;
        while (end < path.states.size() && FillerAt(end) == junction) {
            ++end;
        }
        if (junction != kNowhere) {
            size_t first = t;
            size_t last = end;
            while (first < last && !IsHeard(first)) {
                ++first;
            }
            while (last > first && !IsHeard(last - 1)) {
                --last;
            }
            if (first < last) {
                fillers += last - first;
                const size_t token =
                    junction < words.size() ? words[junction].token : input.tokens.size();
                out.unscripted.push_back({first, last, token});
            }
        }
        t = end;
    }
    out.departs = out.departs || fillers >= kLeastFiller;
}

void region_search::WritePhones() {
    const auto& words = chain.GetWords();
    struct place {
        uint32_t phone;
        uint32_t position;
        uint32_t state; // within a phone that was heard, to separate two of the same
        bool isHeard;
    };
    const auto placeAt = [&](size_t t) -> place {
        const uint32_t junction = FillerAt(t);
        if (junction == kNowhere) {
            const uint32_t state = path.states[t];
            return {input.graph[state]->phone, state / perPhone, 0, false};
        }
        const uint32_t position =
            junction < words.size() ? words[junction].first / perPhone - 1 : input.positions - 1;
        return {heard.states[t] / perPhone, position, heard.states[t] % perPhone, true};
    };
    size_t first = 0;
    place begun = placeAt(0);
    place last = begun;
    for (size_t t = 1; t < path.states.size(); ++t) {
        const place next = placeAt(t);
        if (next.phone != last.phone || next.position != last.position ||
            next.isHeard != last.isHeard || next.state < last.state) {
            WritePhone(first, t, begun.phone, begun.position);
            first = t;
            begun = next;
        }
        last = next;
    }
    WritePhone(first, path.states.size(), begun.phone, begun.position);
}

void region_search::WritePhone(size_t first, size_t end, uint32_t phone, uint32_t position) {
    CSyncMarker marker{};
    marker.type = kPhonemeMarker;
    marker.start = FrameTimeMs(static_cast<int64_t>(first), input.periodMs);
    marker.end = FrameTimeMs(static_cast<int64_t>(end), input.periodMs);
    marker.score =
        input.amplitudes.Amplitude(static_cast<int32_t>(first), static_cast<int32_t>(end));
    marker.text_offset = static_cast<int32_t>(position);
    if (const char* label = input.model.GetLabel(static_cast<int32_t>(phone), false)) {
        CopyText(marker.label, label);
    }
    // Silence that goes on is one, be it the text's or heard beside other speech.
    CSyncMarker* const before = out.phones.empty() ? nullptr : &out.phones.back();
    if (before != nullptr && phone == kSilence && before->text_offset == marker.text_offset &&
        FieldText(before->label) == FieldText(marker.label)) {
        before->end = marker.end;
    } else {
        out.phones.push_back(marker);
    }
}

/// The log-likelihood of an observation in its state of the exact search's path.
double region_search::PlainScore(size_t t) const {
    const state_rec& record = *input.graph[input.plainPath[t]];
    return static_cast<double>(input.scores[t][record.phone * perPhone + record.state]);
}

void region_search::CollectEvidence() {
    for (size_t t = 0; t < input.plainPath.size(); ++t) {
        if (IsHeard(t)) {
            out.evidence.fit += PlainScore(t) - static_cast<double>(heard.scores[t]);
            ++out.evidence.spoken;
        }
    }
    CollectDurations();
}

void region_search::CollectDurations() {
    const auto plain = input.plainPath;
    for (size_t first = 0; first < plain.size();) {
        size_t end = first + 1;
        while (end < plain.size() && plain[end] / perPhone == plain[first] / perPhone) {
            ++end;
        }
        const uint8_t phone = input.graph[plain[first]]->phone;
        if (phone != kSilence) {
            out.evidence.phones.push_back(phone);
            out.evidence.phoneMs.push_back(static_cast<double>(end - first) * input.periodMs);
        }
        first = end;
    }
}

} // namespace

bool FitsLooseSearch(const region_input& input) {
    const uint64_t states =
        uint64_t{input.positions} * static_cast<uint32_t>(input.model.numStates);
    return states * input.scores.GetCount() <= kMostCells;
}

bool MatchRegion(const region_input& input, const std::function<bool(double)>& isCancelled,
                 region_match& out) {
    out = {};
    return input.scores.GetCount() == 0 || region_search(input, out).Run(isCancelled);
}

} // namespace tessarin
