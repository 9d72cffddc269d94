#include "mouth/frame_shaping.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <string_view>
#include <utility>

#include "base/text_copy.h"

namespace tessarin {

namespace {

/// The least weight of a closure in a frame that shows it.
constexpr float kLipsSeen = 0.9f;
constexpr float kTeethSeen = 0.7f;

std::span<articulation_entry> EntriesOf(articulation& frame) {
    return {frame.entries, static_cast<size_t>(frame.count)};
}

template <class Labelled> mouth_class PartOf(const Labelled& labelled) {
    return ClassOf(FieldText(labelled.label));
}

int64_t CentreOf(const articulation& frame) {
    return (int64_t{frame.start} + frame.end) / 2;
}

float WeightOf(articulation& frame, mouth_class which) {
    float sum = 0.0f;
    for (const articulation_entry& entry : EntriesOf(frame)) {
        sum += PartOf(entry) == which ? entry.weight : 0.0f;
    }
    return sum;
}

void SetLabel(std::string_view label, articulation_entry& entry) {
    phoneme_label(label).CopyTo(entry.label);
}

articulation_entry* Find(articulation& frame, std::string_view label) {
    for (articulation_entry& entry : EntriesOf(frame)) {
        if (FieldText(entry.label) == label) {
            return &entry;
        }
    }
    return nullptr;
}

/// The entry of `label`, which joins with weight 0, in place of the least one where there is no
/// room.
articulation_entry& Join(articulation& frame, std::string_view label) {
    if (articulation_entry* const found = Find(frame, label)) {
        return *found;
    }
    constexpr int32_t kMaxEntries = std::size(articulation{}.entries);
    if (frame.count < kMaxEntries) {
        ++frame.count;
        frame.entries[frame.count - 1].weight = -1.0f; // the least
    }
    articulation_entry& entry =
        *std::ranges::min_element(EntriesOf(frame), {}, &articulation_entry::weight);
    SetLabel(label, entry);
    entry.weight = 0.0f;
    return entry;
}

/// Divides the weights by their sum.
void Normalise(articulation& frame) {
    float sum = 0.0f;
    for (const articulation_entry& entry : EntriesOf(frame)) {
        sum += entry.weight;
    }
    for (articulation_entry& entry : EntriesOf(frame)) {
        entry.weight /= sum;
    }
}

/// Gives what is missing to rest, or takes what is too much from all, and keeps the heaviest.
void Balance(int32_t maxWeights, articulation& frame) {
    articulation_entry& rest = Join(frame, "x");
    float moving = 0.0f;
    for (const articulation_entry& entry : EntriesOf(frame)) {
        moving += PartOf(entry) != mouth_class::rest ? entry.weight : 0.0f;
    }
    rest.weight = std::max(1.0f - moving, 0.0f);
    std::ranges::stable_sort(EntriesOf(frame), std::greater{}, &articulation_entry::weight);
    frame.count = std::min(frame.count, maxWeights);
    while (frame.count > 1 && !(frame.entries[frame.count - 1].weight > 0.0f)) {
        --frame.count;
    }
    Normalise(frame);
}

void ScaleVowels(float factor, articulation& frame) {
    for (articulation_entry& entry : EntriesOf(frame)) {
        entry.weight *= PartOf(entry) == mouth_class::vowel ? factor : 1.0f;
    }
}

/// Lowers weights that are more than `slope` above those of the frame before.
void LimitRise(articulation& before, float slope, const std::set<phoneme_label>& closed,
               articulation& frame) {
    for (articulation_entry& entry : EntriesOf(frame)) {
        if (PartOf(entry) == mouth_class::rest ||
            closed.contains(phoneme_label(FieldText(entry.label)))) {
            continue;
        }
        const articulation_entry* const earlier = Find(before, FieldText(entry.label));
        entry.weight =
            std::min(entry.weight, (earlier != nullptr ? earlier->weight : 0.0f) + slope);
    }
}

void Close(std::string_view label, mouth_class which, articulation& frame) {
    const float wanted = which == mouth_class::teeth ? kTeethSeen : kLipsSeen;
    const float seen = WeightOf(frame, which);
    if (seen >= wanted) {
        return;
    }
    for (articulation_entry& entry : EntriesOf(frame)) {
        if (PartOf(entry) != which) {
            entry.weight *= (1.0f - wanted) / std::max(1.0f - seen, 1e-6f);
        }
    }
    Join(frame, label).weight += wanted - seen;
}

/// The frames, and the first of them that a phoneme has not passed.
class Shaper {
public:
    Shaper(const LoudnessCurve& curve, const frame_shaping& wanted, std::vector<articulation>& all)
        : loudness(curve), shaping(wanted), frames(all) {}

    void PlaceFrames(int32_t endMs);
    void ShapePhoneme(const tessarin_phoneme& phoneme);
    void Finish();

private:
    void LimitSlopes();
    articulation* FindClosed(const tessarin_phoneme& phoneme, mouth_class which);

    const LoudnessCurve& loudness;
    const frame_shaping& shaping;
    std::vector<articulation>& frames;
    size_t next = 0; ///< the first frame whose centre lies after all phonemes so far
};

void Shaper::PlaceFrames(int32_t endMs) {
    const double frameMs = 1000.0 / static_cast<double>(shaping.frame_rate);
    const auto timeOf = [&](int64_t index) {
        return static_cast<int32_t>(std::llround(static_cast<double>(index) * frameMs));
    };
    std::vector<articulation> placed;
    const auto place = [&](articulation frame, int64_t index) {
        frame.start = timeOf(index);
        frame.end = timeOf(index + 1);
        placed.push_back(frame);
    };
    const articulation resting = {1, {{"x", 1.0f}}, 0, 0};
    int64_t number = frames.empty() ? 0 : std::llround(frames.front().start / frameMs);
    for (const articulation& frame : frames) {
        const int64_t index = std::max<int64_t>(std::llround(frame.start / frameMs), number);
        while (number < index) {
            place(resting, number++);
        }
        place(frame, number++);
    }
    while (!frames.empty() && timeOf(number - 1) < endMs) { // as far as an articulator may go
        place(resting, number++);
    }
    frames = std::move(placed);
}

void Shaper::ShapePhoneme(const tessarin_phoneme& phoneme) {
    const mouth_class which = PartOf(phoneme);
    while (next < frames.size() && CentreOf(frames[next]) < phoneme.start_ms) {
        ++next;
    }
    if (which == mouth_class::vowel && !loudness.IsEmpty()) {
        const float whole =
            OpeningOf(loudness.Mean(phoneme.start_ms, phoneme.end_ms) - shaping.usual_db);
        for (size_t i = next; i < frames.size() && CentreOf(frames[i]) < phoneme.end_ms; ++i) {
            const float now = OpeningOf(loudness.At(CentreOf(frames[i])) - shaping.usual_db);
            ScaleVowels(now / whole, frames[i]);
        }
    }
    if (shaping.closed.contains(phoneme_label(FieldText(phoneme.label)))) {
        if (articulation* const frame = FindClosed(phoneme, which)) {
            Close(FieldText(phoneme.label), which, *frame);
        }
    }
}

/// The frame that shows the closure best; for one that is shorter than a frame, that which holds
/// its middle.
articulation* Shaper::FindClosed(const tessarin_phoneme& phoneme, mouth_class which) {
    articulation* best = nullptr;
    float most = -1.0f;
    for (size_t i = next; i < frames.size() && CentreOf(frames[i]) < phoneme.end_ms; ++i) {
        const float seen = WeightOf(frames[i], which);
        if (seen > most) {
            best = &frames[i];
            most = seen;
        }
    }
    const int64_t middleMs = (int64_t{phoneme.start_ms} + phoneme.end_ms) / 2;
    for (size_t i = next > 0 ? next - 1 : 0; best == nullptr && i < frames.size(); ++i) {
        if (frames[i].start > middleMs) {
            return nullptr;
        }
        best = frames[i].end > middleMs ? &frames[i] : nullptr;
    }
    return best;
}

void Shaper::Finish() {
    for (articulation& frame : frames) {
        for (articulation_entry& entry : EntriesOf(frame)) {
            entry.weight *= shaping.strength.Of(PartOf(entry));
        }
        Balance(shaping.max_weights, frame);
    }
    if (shaping.slope > 0.0f) {
        LimitSlopes();
    }
}

void Shaper::LimitSlopes() {
    for (size_t i = 1; i < frames.size(); ++i) {
        LimitRise(frames[i - 1], shaping.slope, shaping.closed, frames[i]);
    }
    for (size_t i = frames.size(); i-- > 1;) {
        LimitRise(frames[i], shaping.slope, shaping.closed, frames[i - 1]);
    }
    for (articulation& frame : frames) {
        Balance(shaping.max_weights, frame);
    }
}

} // namespace

void ShapeFrames(std::span<const tessarin_phoneme> phonemes, const LoudnessCurve& loudness,
                 const frame_shaping& shaping, std::vector<articulation>& frames) {
    Shaper shaper(loudness, shaping, frames);
    shaper.PlaceFrames(phonemes.empty() ? 0 : phonemes.back().end_ms);
    for (const tessarin_phoneme& phoneme : phonemes) {
        shaper.ShapePhoneme(phoneme);
    }
    shaper.Finish();
}

} // namespace tessarin
