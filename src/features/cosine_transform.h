#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tessarin {

/// The cosine transform (DCT-II, without a normalising factor) from log band energies to cepstra,
///   c[j] = sum over i of cos((i + 1/2) pi j / n) e[i],
/// with the cosines laid out once for one number of bands and cepstra.
class CCosineTransform {
public:
    void Prepare(int32_t numBands, int32_t numCepstra);

    /// `energies` and `cepstra` have the sizes that were prepared.
    void Apply(std::span<const float> energies, std::span<float> cepstra) const;

private:
    std::vector<float> cosines; // a row of cepstra for each band
};

} // namespace tessarin
