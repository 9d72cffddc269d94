#include "adaptation/feature_layers.h"

#include <algorithm>
#include <vector>

#include <gmock/gmock.h>

#include "features/delta_layouts.h"
#include "features/spectral_feature_descriptor.h"

namespace tessarin {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// What the layout of an analysis makes of values that say which layer they are of.
std::vector<float> PackedLayers(const CSpectralFeatureDescriptor& analysis) {
    const bool hasEnergy = LayoutHasEnergy(analysis.numFeatures);
    const int32_t width = analysis.numCepstra + (hasEnergy ? 1 : 0);
    std::vector<float> values(kObservationScratch, -1.0f);
    for (int32_t i = 0; i < 3 * width; ++i) {
        values[static_cast<size_t>(i)] = static_cast<float>(i / width);
    }
    PackThreeLayers(width, hasEnergy, (analysis.flags & kKeepLastCepstrum) != 0, values);
    values.resize(static_cast<size_t>(analysis.numFeatures));
    return values;
}

std::vector<float> At(const std::vector<float>& values, const std::vector<size_t>& places) {
    std::vector<float> found;
    for (const size_t place : places) {
        found.push_back(values.at(place));
    }
    return found;
}

TEST(FeatureLayers, AreThoseThatTheThreeLayerLayoutPacks) {
    struct layout {
        int32_t numFeatures;
        int32_t numCepstra;
        uint32_t flags;
    };
    for (const layout& each : {layout{38, 12, kKeepLastCepstrum}, layout{39, 12, kKeepLastCepstrum},
                               layout{35, 12, kKeepLastCepstrum}, layout{40, 13, 0}}) {
        SCOPED_TRACE(each.numFeatures);
        CSpectralFeatureDescriptor analysis;
        analysis.numFeatures = each.numFeatures;
        analysis.numCepstra = each.numCepstra;
        analysis.flags = each.flags;
        const std::vector<float> packed = PackedLayers(analysis);
        const feature_layers layers = FindLayers(analysis);
        EXPECT_THAT(At(packed, layers.cepstra), Each(0.0f));
        EXPECT_THAT(At(packed, layers.energy), Each(0.0f));
        EXPECT_THAT(At(packed, layers.slope), Each(1.0f));
        EXPECT_THAT(At(packed, layers.bending), Each(2.0f));
        EXPECT_EQ(static_cast<ptrdiff_t>(layers.cepstra.size() + layers.energy.size()),
                  std::ranges::count(packed, 0.0f));
    }
}

TEST(FeatureLayers, OfFiveFramesAreTheFrameAndItsSlope) {
    CSpectralFeatureDescriptor analysis;
    analysis.numCepstra = 3;
    analysis.numFeatures = 6; // the energy, c1 and c2; then three differences
    EXPECT_THAT(FindLayers(analysis).energy, ElementsAre(0));
    EXPECT_THAT(FindLayers(analysis).cepstra, ElementsAre(1, 2));
    EXPECT_THAT(FindLayers(analysis).slope, ElementsAre(3, 4, 5));
    analysis.numFeatures = 5; // without the energy
    EXPECT_THAT(FindLayers(analysis).energy, IsEmpty());
    EXPECT_THAT(FindLayers(analysis).cepstra, ElementsAre(0, 1));
    EXPECT_THAT(FindLayers(analysis).slope, ElementsAre(2, 3, 4));
}

} // namespace
} // namespace tessarin
