#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tessarin {

/// One triangular band: rises from `low` to `centre`, falls to `high`, in Hz. `reserved` travels
/// with the model file and no analysis reads it.
struct tagBandFilter {
    float low;
    float centre;
    float high;
    float reserved;
};
static_assert(sizeof(tagBandFilter) == 16 && offsetof(tagBandFilter, reserved) == 12);

/// A bank of triangular filters over a power spectrum. Their weights are laid out once for a
/// transform size and rate.
class CBandFilterBank {
public:
    void SetFilters(std::span<const tagBandFilter> bandFilters);

    /// Has the weights ready for bins 0 to `half` of a spectrum of audio at `rate` Hz; does nothing
    /// when they are. Returns false when the bands together cover more bins than kMaxWeights, which
    /// no bank of overlapping neighbours comes near.
    [[nodiscard]] bool Prepare(int32_t half, float rate);

    /// Writes log10 of the weighted mean of `power` in each band to `out`. A mean below 1 counts as
    /// silence and gives 0; so does a band that holds no bin.
    void Apply(std::span<const float> power, std::span<float> out) const;

    int32_t GetNumBands() const { return static_cast<int32_t>(filters.size()); }

    static constexpr int64_t kMaxWeights = int64_t{1} << 22;

private:
    struct placed_band {
        size_t firstBin;
        size_t numBins;
        size_t firstWeight;
        float totalWeight;
    };

    bool FitsWeights() const;
    void Place(const tagBandFilter& filter);
    float BinWidth() const { return sampleRate / static_cast<float>(halfSize * 2); }

    std::vector<tagBandFilter> filters;
    int32_t halfSize = 0;
    float sampleRate = 0.0f;
    std::vector<placed_band> bands; // as many as filters once they are all placed
    std::vector<float> weights;
};

} // namespace tessarin
