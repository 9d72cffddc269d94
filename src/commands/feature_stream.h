#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "base/quib_allocator.h"
#include "tessarin/observation_stream.h"

namespace tessarin {

/// A recording of observations in memory, which can be read again and again, compared to another,
/// saved and loaded. Observations without energy, the silence around an utterance, are kept but
/// take no part.
class CFeatureStream : public IObservationStream {
public:
    CFeatureStream();
    CFeatureStream(const CFeatureStream&) = delete;
    CFeatureStream& operator=(const CFeatureStream&) = delete;
    ~CFeatureStream() override = default;

    /// Records all of `source`, whose observations have `featureCount` values. Those whose energy
    /// is above `energyFloor` are active, with a floor of 0 or less all of them. To be called once.
    /// Returns the code of a failed read.
    error_code Record(IObservationStream& source, int32_t featureCount, float energyFloor);

    /// How many observations are active.
    uint32_t GetNumObservations() override { return static_cast<uint32_t>(active.size()); }
    /// The next active observation, and 3 after the last.
    error_code GetObservation(float* features, float* energy) override;
    void GetFrameGeometry(uint32_t* windowSize, uint32_t* overlap) override;
    float GetSampleRate() override { return sampleRate; }
    void GetEnergyRange(float* minimum, float* maximum) override;
    void SetProcessingFlags(uint32_t) override {}
    error_code GetBandEnergies(float* out, uint32_t* count) override;
    error_code SetNoiseFloor(uint32_t kind, const float* bands, int32_t count) override;

    /// The distance of the active observations of this recording to those of `other` in a time
    /// warp. kNoWarpDistance when either has none, or the two have not the same features.
    virtual void MatchStream(const CFeatureStream& other, float* distance) const;
    /// Writes the counts and all observations to `buffer`, unless it is null. Returns their size in
    /// bytes.
    virtual uint64_t SaveFrames(uint8_t* buffer) const;
    /// Reads what SaveFrames wrote, all of which is there. To be called once. False when the counts
    /// or a value cannot be.
    virtual bool LoadFrames(const uint8_t* data, float energyFloor);

    /// Back to the first observation.
    void Rewind() { cursor = 0; }

    int32_t FeatureCount() const { return numFeatures; }
    /// The values of active observation `index`, then one that is 0, then the energy.
    const float* ActiveFrame(size_t index) const {
        return frames[static_cast<size_t>(active[index])];
    }

private:
    std::span<float> AppendFrame();
    void MarkActive(float energyFloor);

    size_t cursor = 0;
    float minEnergy = 0.0f;
    float maxEnergy = 0.0f;
    int32_t numFeatures = 0;
    int32_t stride = 0; // floats of a frame
    float sampleRate = 0.0f;
    uint32_t frameSize = 0;    // samples
    uint32_t frameOverlap = 0; // samples
    std::vector<int32_t> active;
    quib_allocator pool;
    std::vector<float*> frames;
};

} // namespace tessarin
