#include "adaptation/feature_layers.h"

#include <algorithm>
#include <cstdint>

#include "features/delta_layouts.h"
#include "features/spectral_feature_descriptor.h"

namespace tessarin {

namespace {

/// Appends the next `count` places, as far as the observation reaches.
void Append(size_t count, size_t numFeatures, size_t& place, std::vector<size_t>& layer) {
    for (const size_t end = place + count; place < end; ++place) {
        if (place < numFeatures) {
            layer.push_back(place);
        }
    }
}

} // namespace

feature_layers FindLayers(const CSpectralFeatureDescriptor& analysis) {
    const auto numFeatures = static_cast<size_t>(std::max(analysis.numFeatures, 0));
    const auto numCepstra = static_cast<size_t>(std::max(analysis.numCepstra, 1));
    const bool hasEnergy = LayoutHasEnergy(analysis.numFeatures);
    feature_layers layers;
    size_t place = 0;
    if (analysis.numFeatures < kThreeLayerFeatures) {
        Append(hasEnergy ? 1 : 0, numFeatures, place, layers.energy);
        Append(numCepstra - 1, numFeatures, place, layers.cepstra);
        Append(numCepstra, numFeatures, place, layers.slope);
        return layers;
    }
    const bool keepsLast = (analysis.flags & kKeepLastCepstrum) != 0;
    Append(std::max<size_t>(numCepstra, 2) - (keepsLast ? 1 : 2), numFeatures, place,
           layers.cepstra);
    Append(numCepstra, numFeatures, place, layers.slope);
    Append(numCepstra, numFeatures, place, layers.bending);
    if (hasEnergy) {
        // The energies stand where they do with the last cepstrum.
        place = 3 * numCepstra - 1;
        for (std::vector<size_t>* layer : {&layers.energy, &layers.slope, &layers.bending}) {
            Append(1, numFeatures, place, *layer);
        }
    }
    return layers;
}

} // namespace tessarin
