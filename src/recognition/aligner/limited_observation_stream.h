#pragma once

#include <cstdint>
#include <optional>

#include "tessarin/observation_stream.h"

namespace tessarin {

class CSpectralStream;

/// A stream that claims to have no more than a given number of observations, in front of a stream
/// that cannot be limited itself. The limit changes what is announced, not what can be read. After
/// the observations that the source has, it gives zeros, as the spectral stream gives silence.
class CLimitedObservationStream : public IObservationStream {
public:
    CLimitedObservationStream(IObservationStream& observations, int32_t featureCount)
        : source(observations), numFeatures(featureCount) {}

    void SetMaxObservations(uint32_t count) { maxObservations = count; }

    uint32_t GetNumObservations() override;
    error_code GetObservation(float* features, float* energy) override;
    void GetFrameGeometry(uint32_t* windowSize, uint32_t* overlap) override;
    float GetSampleRate() override;
    void GetEnergyRange(float* minimum, float* maximum) override;
    void SetProcessingFlags(uint32_t flags) override;
    error_code GetBandEnergies(float* out, uint32_t* count) override;
    error_code SetNoiseFloor(uint32_t kind, const float* bands, int32_t count) override;

private:
    IObservationStream& source;
    int32_t numFeatures;
    uint32_t maxObservations = UINT32_MAX;
    uint32_t delivered = 0;
};

/// Any stream, with a limit: the spectral stream keeps its own, others get a stream in front.
class limited_stream {
public:
    limited_stream(IObservationStream& observations, int32_t featureCount);

    IObservationStream& Get() { return *stream; }
    void SetMaxObservations(uint32_t count);

private:
    IObservationStream* stream;
    CSpectralStream* spectral;
    std::optional<CLimitedObservationStream> adapter;
};

} // namespace tessarin
