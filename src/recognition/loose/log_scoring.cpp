#include "recognition/loose/log_scoring.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include "model/accoustic_hmm.h"

#if defined(__GNUC__) && defined(__x86_64__)
#include <immintrin.h>
#endif

namespace tessarin {
namespace {

constexpr size_t kLanes = 8;
constexpr size_t kTogether = log_scoring::kTogether;
constexpr float kNever = -std::numeric_limits<float>::infinity();
constexpr float kVanishing = 15.0f;

/// A group of kLanes Gaussians at kTogether observations: constant - sum of half * (x - mean)^2.
/// `out` is [observation][lane].
using group_kernel = void (*)(const float* means, const float* halves, const float* constants,
                              const float* const* x, size_t numFeatures, float* out);

void PlainGroup(const float* means, const float* halves, const float* constants,
                const float* const* x, size_t numFeatures, float* out) {
    for (size_t each = 0; each < kTogether; ++each) {
        float sums[kLanes];
        std::copy_n(constants, kLanes, sums);
        for (size_t k = 0; k < numFeatures; ++k) {
            const float value = x[each][k];
            for (size_t lane = 0; lane < kLanes; ++lane) {
                const float difference = value - means[k * kLanes + lane];
                sums[lane] -= halves[k * kLanes + lane] * (difference * difference);
            }
        }
        std::copy_n(sums, kLanes, out + each * kLanes);
    }
}

#if defined(__GNUC__) && defined(__x86_64__)
[[gnu::target("avx2")]] void Avx2Group(const float* means, const float* halves,
                                       const float* constants, const float* const* x,
                                       size_t numFeatures, float* out) {
    static_assert(kTogether == 4 && kLanes == 8);
    const __m256 constant = _mm256_loadu_ps(constants);
    __m256 sums[kTogether] = {constant, constant, constant, constant};
    for (size_t k = 0; k < numFeatures; ++k) {
        const __m256 mean = _mm256_loadu_ps(means + k * kLanes);
        const __m256 half = _mm256_loadu_ps(halves + k * kLanes);
#pragma GCC unroll 4 // keeps the sums in registers
        for (size_t each = 0; each < kTogether; ++each) {
            const __m256 difference = _mm256_sub_ps(_mm256_set1_ps(x[each][k]), mean);
            sums[each] = _mm256_sub_ps(sums[each],
                                       _mm256_mul_ps(half, _mm256_mul_ps(difference, difference)));
        }
    }
    for (size_t each = 0; each < kTogether; ++each) {
        _mm256_storeu_ps(out + each * kLanes, sums[each]);
    }
}
#endif

group_kernel FastestKernel() {
#if defined(__GNUC__) && defined(__x86_64__)
    if (__builtin_cpu_supports("avx2")) {
        return Avx2Group;
    }
#endif
    return PlainGroup;
}

/// The logarithm of the sum of exp(values); what is not a number counts as 0.
float LogOfSum(std::span<const float> values) {
    float best = kNever;
    for (const float value : values) {
        best = value > best ? value : best;
    }
    if (!(best > log_scoring::kLowest)) {
        return log_scoring::kLowest;
    }
    float sum = 0.0f;
    for (const float value : values) {
        if (value > best - kVanishing) {
            sum += std::exp(value - best);
        }
    }
    return best + std::log(sum);
}

} // namespace

log_scoring::log_scoring(const CAccousticHMM& model)
    : numFeatures(static_cast<size_t>(model.descriptor.numFeatures)) {
    size_t groups = 0;
    for (const CSingleAccHmm& phone : model.models) {
        for (const CAccousticHMMState& state : phone.states) {
            states.push_back({groups, (state.mixtures.size() + kLanes - 1) / kLanes});
            groups += states.back().count;
            mostGroups = std::max(mostGroups, states.back().count);
        }
    }
    means.resize(groups * numFeatures * kLanes);
    halves.resize(groups * numFeatures * kLanes);
    constants.assign(groups * kLanes, kNever);
    auto place = states.begin();
    for (const CSingleAccHmm& phone : model.models) {
        for (const CAccousticHMMState& state : phone.states) {
            for (size_t m = 0; m < state.mixtures.size(); ++m) {
                const CGaussMixture& mixture = state.mixtures[m];
                const size_t group = place->first + m / kLanes;
                const size_t lane = m % kLanes;
                const double factor = mixture.gConst * mixture.weight;
                constants[group * kLanes + lane] =
                    factor > 0.0 ? static_cast<float>(std::log(factor)) : kNever;
                for (size_t k = 0; k < numFeatures; ++k) {
                    const size_t at = (group * numFeatures + k) * kLanes + lane;
                    means[at] = mixture.mean[k];
                    halves[at] = 0.5f * mixture.inverseCovariance[k];
                }
            }
            ++place;
        }
    }
}

void log_scoring::Score(const float* const* x, float* const* out) const {
    const group_kernel kernel = FastestKernel();
    std::vector<float> logs(mostGroups * kLanes * kTogether); // [observation][mixture]
    float group[kLanes * kTogether];
    for (size_t state = 0; state < states.size(); ++state) {
        const size_t mixtures = states[state].count * kLanes;
        for (size_t i = 0; i < states[state].count; ++i) {
            const size_t number = states[state].first + i;
            const size_t place = number * numFeatures * kLanes;
            kernel(means.data() + place, halves.data() + place, constants.data() + number * kLanes,
                   x, numFeatures, group);
            for (size_t each = 0; each < kTogether; ++each) {
                std::copy_n(group + each * kLanes, kLanes,
                            logs.begin() +
                                static_cast<std::ptrdiff_t>(each * mixtures + i * kLanes));
            }
        }
        for (size_t each = 0; each < kTogether; ++each) {
            out[each][state] = LogOfSum({logs.data() + each * mixtures, mixtures});
        }
    }
}

} // namespace tessarin
