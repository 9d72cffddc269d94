#pragma once

#include <cstddef>
#include <vector>

#include "model/gaussian_distances.h"

namespace tessarin {

class CAccousticHMM;

/// The kinds of sounds that are moved apart from one another.
enum class sound_class { kSilence, kSpeech };
inline constexpr size_t kSoundClasses = 2;

/// The class of the phoneme number `phoneme` of a model.
sound_class ClassOf(const CAccousticHMM& model, size_t phoneme);

/// All Gaussians of a model as one mixture, in which all states are as likely. What it says of an
/// observation needs neither a text nor a search.
class GaussianPool {
public:
    explicit GaussianPool(const CAccousticHMM& model);

    size_t GetCount() const { return origins.size(); }
    size_t GetNumFeatures() const { return numFeatures; }
    sound_class GetClass(size_t gaussian) const { return origins[gaussian].soundClass; }
    float GetInverseVariance(size_t gaussian, size_t feature) const;
    /// In the model, without what Shift added.
    float GetMean(size_t gaussian, size_t feature) const;

    /// Has the means of a class lie `bias` (a value a feature) from where they are in the model.
    void Shift(sound_class soundClass, const std::vector<double>& bias);

    /// How far a Gaussian is responsible for an observation.
    struct share {
        size_t gaussian;
        double weight; ///< 0 to 1
    };
    /// The logarithm of the likelihood of `x`; `out` receives the shares that count.
    double Share(const float* x, std::vector<share>& out);

private:
    struct origin {
        const float* mean; ///< in the model
        sound_class soundClass;
        double logFactor; ///< of the weight times the constant of the Gaussian
    };

    size_t Place(size_t gaussian, size_t feature) const {
        return (gaussian / kGaussianLanes * numFeatures + feature) * kGaussianLanes +
               gaussian % kGaussianLanes;
    }

    gaussian_distances distances;
    size_t numFeatures;
    std::vector<origin> origins;
    std::vector<float> means;     ///< [group][feature][lane]
    std::vector<double> inverses; ///< likewise
    std::vector<double> scores;   ///< room for one a Gaussian
};

} // namespace tessarin
