#include "articulation/phoneme_mixture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include "base/trunc_sat.h"

namespace tessarin {
namespace {

int32_t Hundredths(const phoneme_mixture::entry& entry) {
    return TruncSat<int32_t>(entry.weight * 100.0f);
}

} // namespace

float& phoneme_mixture::operator[](phoneme_label label) {
    auto place = std::find_if(entries.begin(), entries.end(),
                              [&](const entry& e) { return e.label >= label; });
    if (place == entries.end() || place->label != label) {
        place = entries.insert(place, {label, 0.0f});
    }
    return place->weight;
}

bool phoneme_mixture::Contains(phoneme_label label) const {
    return std::any_of(entries.begin(), entries.end(),
                       [&](const entry& e) { return e.label == label; });
}

float phoneme_mixture::Sum() const {
    float sum = 0.0f;
    for (const entry& e : entries) {
        sum += e.weight;
    }
    return sum;
}

void phoneme_mixture::Normalize() {
    const float sum = Sum();
    if (!std::isfinite(sum)) {
        Clear();
    }
    if (sum == 0.0f) {
        return;
    }
    for (entry& e : entries) {
        e.weight /= sum;
    }
}

/// An insertion sort: a mixture has a handful of entries, and nothing is allocated.
void SortByWeight(std::span<phoneme_mixture::entry> entries) {
    for (auto place = entries.begin(); place != entries.end(); ++place) {
        const auto smaller = std::find_if(entries.begin(), place, [&](const auto& sorted) {
            return Hundredths(sorted) < Hundredths(*place);
        });
        std::rotate(smaller, place, std::next(place));
    }
}

articulation MakeArticulation(const phoneme_mixture& mixture, int32_t startMs, int32_t endMs) {
    std::array<phoneme_mixture::entry, 10> taken;
    size_t count = 0;
    for (const phoneme_mixture::entry& e : mixture) {
        if (e.label.Length() <= 2 && e.weight > 0.0f && count < taken.size()) {
            taken[count++] = e;
        }
    }
    SortByWeight({taken.data(), count});

    articulation record = {};
    record.count = static_cast<int32_t>(count);
    record.start = startMs;
    record.end = endMs;
    for (size_t i = 0; i < count; ++i) {
        taken[i].label.CopyTo(record.entries[i].label);
        record.entries[i].weight = taken[i].weight;
    }
    return record;
}

} // namespace tessarin
