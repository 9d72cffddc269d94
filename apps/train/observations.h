#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "apps/train/speech_changes.h"

namespace tessarin {
struct CSpectralFeatureDescriptor;
}

namespace tessarin::training {

/// Feature vectors in time order.
struct observation_matrix {
    size_t width = 0;
    std::vector<float> values;

    size_t GetCount() const { return width == 0 ? 0 : values.size() / width; }
    const float* operator[](size_t observation) const {
        return values.data() + observation * width;
    }
};

/// The period of observations.
inline constexpr double kObservationMs = 10.0;

/// The analysis that the model is made for: 12 cepstra of 24 mel-spaced bands and the energy, with
/// first and second differences.
void DescribeFeatures(CSpectralFeatureDescriptor& descriptor);

/// Reads the first channel of a WAV file. False when it cannot be read.
bool ReadRecording(const std::string& path, recording& out);

/// Runs the engine's own front end. Empty when the front end refuses.
observation_matrix Analyse(const recording& speech, const CSpectralFeatureDescriptor& descriptor);

} // namespace tessarin::training
