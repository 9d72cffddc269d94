#include "recognition/loose/region_match.h"

#include <algorithm>
#include <cmath>

#include "base/text_copy.h"
#include "model/accoustic_hmm.h"
#include "recognition/loose/text_follower.h"
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
constexpr uint32_t kNowhere = UINT32_MAX;
constexpr uint32_t kSilence = 0;

/// The making of one result.
struct region_writer {
    region_writer(const region_input& regionInput, region_match& result)
        : input(regionInput), chain(regionInput.chain), path(regionInput.follower.GetPath()),
          out(result), perPhone(static_cast<uint32_t>(input.model.numStates)) {}

    bool IsShort(size_t index) const;
    bool IsSlurred(size_t index) const;
    bool SkipsWords(const std::vector<bool>& isSaid) const;
    void ListWords();
    void ListStretches();
    struct place;
    place PlaceAt(size_t t) const;
    void WritePhones();
    void WritePhone(size_t first, size_t end, const place& at, bool isLast);
    CSyncMarker Span(uint32_t type, size_t first, size_t end, const place& at) const;
    void CollectFit();
    void CollectDurations();

    /// The junction of other speech at an observation, or kNowhere in the text.
    uint32_t FillerAt(size_t t) const {
        return path.states[t] >= loose_path::kFiller ? path.states[t] - loose_path::kFiller
                                                     : kNowhere;
    }
    bool IsHeard(size_t t) const { return path.heardStates[t] >= perPhone; }

    const region_input& input;
    const word_chain& chain;
    const followed_path& path;
    region_match& out;
    const uint32_t perPhone;
};

void region_writer::ListWords() {
    const auto& words = chain.GetWords();
    std::vector<bool> isOnPath(words.size() + 1);
    for (const uint32_t state : path.states) {
        if (state < loose_path::kFiller) {
            isOnPath[chain.WordOf(state)] = true;
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
            {words[i].token, isSaid, std::clamp(margin, -kMostMargin, kMostMargin)});
    }
    out.departs = out.departs || SkipsWords(isOnPath);
}

/// Whether a word can be said with few phonemes.
bool region_writer::IsShort(size_t index) const {
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

bool region_writer::IsSlurred(size_t index) const {
    return path.margins[index] > kSlurredMargin && IsShort(index);
}

/// Whether words are skipped that cannot just be slurred.
bool region_writer::SkipsWords(const std::vector<bool>& isSaid) const {
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
void region_writer::ListStretches() {
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

/// What an observation is part of.
struct region_writer::place {
    uint32_t phone;
    uint32_t position;
    uint32_t state; ///< inside the phone
    bool isHeard;

    /// Silence that goes on is one, be it the text's or heard beside other speech; a phone that is
    /// heard twice begins again.
    bool GoesOnWith(const place& next) const {
        return next.phone == phone && next.position == position &&
               (phone == kSilence ||
                (next.isHeard == isHeard && (!isHeard || next.state >= state)));
    }
};

region_writer::place region_writer::PlaceAt(size_t t) const {
    const auto& words = chain.GetWords();
    const uint32_t junction = FillerAt(t);
    if (junction == kNowhere) {
        const uint32_t state = path.states[t];
        return {input.graph[state]->phone, state / perPhone, state % perPhone, false};
    }
    const uint32_t after =
        junction < words.size() ? words[junction].first / perPhone : input.positions;
    return {path.heardStates[t] / perPhone, std::max(after, 1u) - 1, path.heardStates[t] % perPhone,
            true};
}

void region_writer::WritePhones() {
    size_t first = 0;
    place begun = PlaceAt(0);
    place last = begun;
    for (size_t t = 1; t < path.states.size(); ++t) {
        const place next = PlaceAt(t);
        if (!last.GoesOnWith(next)) {
            WritePhone(first, t, begun, false);
            first = t;
            begun = next;
        }
        last = next;
    }
    WritePhone(first, path.states.size(), begun, true);
}

CSyncMarker region_writer::Span(uint32_t type, size_t first, size_t end, const place& at) const {
    CSyncMarker marker{};
    marker.type = type;
    marker.start = FrameTimeMs(static_cast<int64_t>(first), input.periodMs);
    marker.end = FrameTimeMs(static_cast<int64_t>(end), input.periodMs);
    marker.score =
        input.amplitudes.Amplitude(static_cast<int32_t>(first), static_cast<int32_t>(end));
    marker.text_offset = static_cast<int32_t>(at.position);
    return marker;
}

void region_writer::WritePhone(size_t first, size_t end, const place& at, bool isLast) {
    CSyncMarker marker = Span(kPhonemeMarker, first, end, at);
    if (const char* label = input.model.GetLabel(static_cast<int32_t>(at.phone), false)) {
        CopyText(marker.label, label);
    }
    out.phones.push_back(marker);
    // As in the exact search's results, the last phoneme has no segments.
    size_t begin = first;
    for (size_t t = first + 1; input.stateMarkers && !isLast && t <= end; ++t) {
        if (t == end || PlaceAt(t).state != PlaceAt(t - 1).state) {
            out.phones.push_back(Span(kStateMarker, begin, t, at));
            begin = t;
        }
    }
}

void region_writer::CollectFit() {
    out.evidence.fit = path.fit;
    out.evidence.spoken = path.spoken;
    for (size_t t = 0; t < input.plainPath.size(); ++t) {
        const state_rec& record = *input.graph[input.plainPath[t]];
        const auto above = input.follower.AboveHeard(t, record.phone * perPhone + record.state);
        if (!above) {
            return;
        }
        if (t == 0) {
            out.evidence.fit = 0.0;
            out.evidence.spoken = 0;
        }
        if (IsHeard(t)) {
            out.evidence.fit += *above;
            ++out.evidence.spoken;
        }
    }
}

void region_writer::CollectDurations() {
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

region_match MatchRegion(const region_input& input) {
    region_match match;
    const followed_path& path = input.follower.GetPath();
    match.spread = path.spread;
    match.isFound = path.isFound;
    if (match.isFound) {
        region_writer writer(input, match);
        writer.ListWords();
        writer.ListStretches();
        writer.WritePhones();
        writer.CollectFit();
        writer.CollectDurations();
    }
    return match;
}

} // namespace tessarin
