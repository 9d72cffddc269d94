#include "features/band_filters.h"

#include <algorithm>
#include <cmath>

#include "base/trunc_sat.h"

namespace tessarin {

namespace {

struct bin_range {
    int32_t first;
    int32_t last; // inclusive; below `first` when no bin is covered
};

bin_range CoveredBins(const tagBandFilter& band, int32_t half, float binWidth) {
    const auto first = TruncSat<int32_t>(band.low / binWidth);
    const auto last = TruncSat<int32_t>(band.high / binWidth);
    return {std::max(first, 0), std::min(last, half)};
}

float TriangleWeight(const tagBandFilter& band, float frequency) {
    if (frequency < band.low) {
        return 0.0f;
    }
    if (frequency > band.low && frequency < band.centre) {
        return (frequency - band.low) / (band.centre - band.low);
    }
    if (frequency < band.high) {
        return (band.high - frequency) / (band.high - band.centre);
    }
    return 0.0f;
}

} // namespace

void CBandFilterBank::SetFilters(std::span<const tagBandFilter> bandFilters) {
    bands.clear();
    filters.assign(bandFilters.begin(), bandFilters.end());
}

bool CBandFilterBank::Prepare(int32_t half, float rate) {
    if (halfSize == half && sampleRate == rate && bands.size() == filters.size()) {
        return true;
    }
    halfSize = half;
    sampleRate = rate;
    bands.clear();
    weights.clear();
    if (!FitsWeights()) {
        return false;
    }
    for (const tagBandFilter& filter : filters) {
        Place(filter);
    }
    return true;
}

bool CBandFilterBank::FitsWeights() const {
    int64_t total = 0;
    for (const tagBandFilter& filter : filters) {
        const bin_range bins = CoveredBins(filter, halfSize, BinWidth());
        total += std::max(int64_t{bins.last} - bins.first + 1, int64_t{0});
    }
    return total <= kMaxWeights;
}

void CBandFilterBank::Place(const tagBandFilter& filter) {
    const bin_range bins = CoveredBins(filter, halfSize, BinWidth());
    placed_band band = {0, 0, weights.size(), 0.0f};
    for (int32_t bin = bins.first; bin <= bins.last; ++bin) {
        const float weight = TriangleWeight(filter, static_cast<float>(bin) * BinWidth());
        weights.push_back(weight);
        band.totalWeight += weight;
    }
    band.numBins = weights.size() - band.firstWeight;
    band.firstBin = band.numBins == 0 ? 0 : static_cast<size_t>(bins.first);
    bands.push_back(band);
}

void CBandFilterBank::Apply(std::span<const float> power, std::span<float> out) const {
    for (size_t i = 0; i < bands.size(); ++i) {
        const placed_band& band = bands[i];
        const float* weight = weights.data() + band.firstWeight;
        const float* bin = power.data() + band.firstBin;
        float sum = 0.0f;
        for (size_t k = 0; k < band.numBins; ++k) {
            sum += weight[k] * bin[k];
        }
        const float mean = sum / band.totalWeight;
        out[i] = mean >= 1.0f ? std::log10(mean) : 0.0f; // not-a-number gives 0 too
    }
}

} // namespace tessarin
