#pragma once

#include <cstdint>

namespace tessarin {

/// A way of having heard the audio up to an observation: the state it ends in, and by its parents
/// the states before.
struct hmm_hypothesis {
    uint16_t phone;
    double score;
    uint16_t state;  ///< in the phone
    int32_t parent;  ///< index of the hypothesis one observation before, -1 for none
    int32_t ended;   ///< index of the hypothesis that ended the phone before, -1 for none
    uint16_t frames; ///< observations in this phone so far; wraps after some ten minutes
};
static_assert(sizeof(hmm_hypothesis) == 32);

/// The hypotheses of all observations in one growing array. With the 120 states of a common model
/// at 10 ms an observation up to 23 MB come in a minute of audio. Most of them lead nowhere, and
/// DropDeadEnds lets a search of any length do with the first step of the array.
class CHmmHypothesisTree {
public:
    static constexpr int32_t kGrowthStep = 1024000;

    explicit CHmmHypothesisTree(int32_t growthStep);
    CHmmHypothesisTree(const CHmmHypothesisTree&) = delete;
    CHmmHypothesisTree& operator=(const CHmmHypothesisTree&) = delete;
    virtual ~CHmmHypothesisTree();

    /// A hypothesis for the first observation. False without memory, as of AddChild; what is there
    /// already stays.
    virtual bool AddRoot(uint16_t phone, double score, uint16_t state);
    /// A hypothesis that goes on from the one at `parentIndex`.
    virtual bool AddChild(const hmm_hypothesis& parent, int32_t parentIndex, uint16_t phone,
                          double score, uint16_t state);
    /// Moves the live hypotheses to the front and cuts them off from their parents.
    virtual void Compact();
    /// Makes room for `count` more hypotheses.
    virtual bool Reserve(int32_t additional);
    /// Makes room for at least `wanted` hypotheses in all, in whole steps beyond the present.
    virtual bool Grow(int32_t wanted);

    /// Drops the hypotheses that no live one descends from. The others keep their order and their
    /// links, and live ones move forward by the number that is returned. Throws std::bad_alloc,
    /// which changes nothing.
    int32_t DropDeadEnds();

    hmm_hypothesis& operator[](int32_t index) { return array[index]; }
    const hmm_hypothesis& operator[](int32_t index) const { return array[index]; }
    int32_t GetCount() const { return count; }
    int32_t GetCapacity() const { return capacity; }
    void SetFirstLive(int32_t index) { firstLive = index; }

private:
    hmm_hypothesis* Take();

    hmm_hypothesis* array = nullptr;
    int32_t capacity = 0;
    int32_t step;
    int32_t count = 0;
    int32_t firstLive = 0;
};

} // namespace tessarin
