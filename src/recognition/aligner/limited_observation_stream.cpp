#include "recognition/aligner/limited_observation_stream.h"

#include <algorithm>

#include "features/spectral_stream.h"

namespace tessarin {

uint32_t CLimitedObservationStream::GetNumObservations() {
    return std::min(maxObservations, source.GetNumObservations());
}

error_code CLimitedObservationStream::GetObservation(float* features, float* energy) {
    if (delivered >= source.GetNumObservations()) {
        std::fill_n(features, numFeatures, 0.0f);
        *energy = 0.0f;
        return kNoError;
    }
    ++delivered;
    return source.GetObservation(features, energy);
}

void CLimitedObservationStream::GetFrameGeometry(uint32_t* windowSize, uint32_t* overlap) {
    source.GetFrameGeometry(windowSize, overlap);
}

float CLimitedObservationStream::GetSampleRate() {
    return source.GetSampleRate();
}

void CLimitedObservationStream::GetEnergyRange(float* minimum, float* maximum) {
    source.GetEnergyRange(minimum, maximum);
}

void CLimitedObservationStream::SetProcessingFlags(uint32_t flags) {
    source.SetProcessingFlags(flags);
}

error_code CLimitedObservationStream::GetBandEnergies(float* out, uint32_t* count) {
    return source.GetBandEnergies(out, count);
}

error_code CLimitedObservationStream::SetNoiseFloor(uint32_t kind, const float* bands,
                                                    int32_t count) {
    return source.SetNoiseFloor(kind, bands, count);
}

limited_stream::limited_stream(IObservationStream& observations, int32_t featureCount)
    : stream(&observations), spectral(CSpectralStream::Find(&observations)) {
    if (spectral == nullptr) {
        stream = &adapter.emplace(observations, featureCount);
    }
}

void limited_stream::SetMaxObservations(uint32_t count) {
    if (spectral != nullptr) {
        spectral->SetMaxObservations(count);
    } else {
        adapter->SetMaxObservations(count);
    }
}

} // namespace tessarin
