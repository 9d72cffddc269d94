#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/tarray.h"
#include "tessarin/error_codes.h"

namespace tessarin {

class IObservationStream;

/// What a search reads its observations from. It makes sure that they fit the model, and holds the
/// current one. Observations that were looked ahead at are read early, but come in their turn, and
/// a read that failed fails when its turn comes.
class observation_source {
public:
    /// How far a search can look ahead.
    static constexpr uint32_t kMostAhead = 8;

    /// The model scores `featureCount` values of each observation of `observations`.
    observation_source(IObservationStream& observations, int32_t featureCount);

    /// Asks for the number of observations, once, and gives `energies` (may be null) room for as
    /// many. Returns 2 when the stream is known to write more values than the model scores, and 1
    /// without memory or for more observations than can be numbered.
    [[nodiscard]] error_code Open(TArray<float>* energies);
    /// Of Open.
    uint32_t GetCount() const { return count; }

    /// Goes on to the next observation and stores its energy. Returns the code of a failed read.
    [[nodiscard]] error_code Next();
    /// Of the current observation.
    const float* GetFeatures() const { return Slot(delivered + kSlots - 1); }
    float GetEnergy() const { return energyOf[(delivered + kSlots - 1) % kSlots]; }

    /// The features of the observation `distance` (1 to kMostAhead) after the current one, or null
    /// where the stream ends or fails before it. What is read here is gone from the stream.
    const float* LookAhead(uint32_t distance);

private:
    static constexpr uint64_t kSlots = kMostAhead + 1;

    const float* Slot(uint64_t index) const { return buffer.data() + (index % kSlots) * width; }
    error_code Read();

    IObservationStream& stream;
    const int32_t numFeatures;
    const size_t width;
    std::vector<float> buffer; // kSlots observations
    float energyOf[kSlots] = {};
    TArray<float>* kept = nullptr;
    uint32_t count = 0;
    uint64_t delivered = 0;
    uint64_t received = 0;
    error_code failure = kNoError; // of the read ahead that comes next
};

} // namespace tessarin
