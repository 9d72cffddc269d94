#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "articulation/phoneme_label.h"
#include "tessarin/articulator.h"

namespace tessarin {

/// Phonemes and their weights in a mouth shape, in label order, each label once.
class phoneme_mixture {
public:
    struct entry {
        phoneme_label label;
        float weight;
    };

    /// The weight of `label`, which joins with weight 0 if it is not there.
    float& operator[](phoneme_label label);
    bool Contains(phoneme_label label) const;
    float Sum() const;
    /// Divides the weights by their sum. Weights that sum to 0 stay, and a mixture without a finite
    /// sum, which is not a mouth shape, becomes empty.
    void Normalize();
    void Erase(std::vector<entry>::iterator place) { entries.erase(place); }
    void Clear() { entries.clear(); }

    bool IsEmpty() const { return entries.empty(); }
    size_t Size() const { return entries.size(); }
    auto begin() { return entries.begin(); }
    auto end() { return entries.end(); }
    auto begin() const { return entries.begin(); }
    auto end() const { return entries.end(); }

private:
    std::vector<entry> entries;
};

/// Sorts by falling weight in whole hundredths; equal ones keep their order.
void SortByWeight(std::span<phoneme_mixture::entry> entries);

/// The record of a frame: the entries that have a weight and a label of at most two characters,
/// at most 10, largest first.
articulation MakeArticulation(const phoneme_mixture& mixture, int32_t startMs, int32_t endMs);

} // namespace tessarin
