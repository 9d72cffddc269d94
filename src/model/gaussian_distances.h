#pragma once

#include <cstddef>
#include <vector>

namespace tessarin {

/// How many Gaussians one call of a distance kernel works on.
inline constexpr size_t kGaussianLanes = 8;

/// For each of kGaussianLanes Gaussians the squared distance of `x` from its mean, weighted by the
/// inverse variances: distances[lane] = sum over k, in order, of
/// inverses[k][lane] * (x[k] - means[k][lane])^2. The difference is rounded to single precision,
/// all else is double.
using gaussian_distances = void (*)(const float* means, const double* inverses, const float* x,
                                    size_t numFeatures, double* distances);

/// The definition, one Gaussian after the other.
void PlainGaussianDistances(const float* means, const double* inverses, const float* x,
                            size_t numFeatures, double* distances);

/// The kernels that this machine can run, slowest first. All agree to the last bit.
std::vector<gaussian_distances> GaussianDistanceKernels();

} // namespace tessarin
