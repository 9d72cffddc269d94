#pragma once

#include <cstddef>
#include <vector>

namespace tessarin {

struct CSpectralFeatureDescriptor;

/// Which values of an observation are those of the frame itself, and which are differences over
/// time. A microphone or a voice that differs from another by a fixed amount shows in the cepstra
/// alone, since differences lose it.
struct feature_layers {
    std::vector<size_t> cepstra;
    std::vector<size_t> energy;  ///< one place, or none
    std::vector<size_t> slope;   ///< first differences of all that the layout has
    std::vector<size_t> bending; ///< second differences; empty in the five-frame layout
};

/// The layers of the observations that `analysis` makes.
feature_layers FindLayers(const CSpectralFeatureDescriptor& analysis);

} // namespace tessarin
