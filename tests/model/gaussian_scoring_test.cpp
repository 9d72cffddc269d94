#include "model/gaussian_scoring.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <random>

#include "model/accoustic_hmm.h"

namespace tessarin {
namespace {

/// The definition, read off the formula.
double PlainLikelihood(const CAccousticHMMState& state, const std::vector<float>& x) {
    double p = 0.0;
    for (const CGaussMixture& mixture : state.mixtures) {
        double d = 0.0;
        for (size_t k = 0; k < x.size(); ++k) {
            const float difference = x[k] - mixture.mean[k];
            d += static_cast<double>(mixture.inverseCovariance[k]) *
                 (static_cast<double>(difference) * static_cast<double>(difference));
        }
        p += std::exp(-0.5 * d) * (mixture.gConst * mixture.weight);
    }
    return p;
}

class RandomStates {
public:
    std::vector<float> Values(size_t count, float low, float high) {
        std::uniform_real_distribution<float> uniform(low, high);
        std::vector<float> values(count);
        for (float& value : values) {
            value = uniform(generator);
        }
        return values;
    }

    std::vector<CSingleAccHmm> Models(size_t mixtures, size_t numFeatures) {
        std::vector<CSingleAccHmm> models(2);
        for (CSingleAccHmm& model : models) {
            model.states.resize(3);
            for (CAccousticHMMState& state : model.states) {
                for (size_t m = 0; m < mixtures; ++m) {
                    CGaussMixture mixture;
                    mixture.mean = Values(numFeatures, -4.0f, 4.0f);
                    mixture.inverseCovariance = Values(numFeatures, 0.01f, 9.0f);
                    mixture.weight = static_cast<double>(Values(1, 0.0f, 1.0f)[0]);
                    mixture.gConst = static_cast<double>(Values(1, 1e-9f, 1e-7f)[0]);
                    state.mixtures.push_back(mixture);
                }
            }
        }
        return models;
    }

private:
    std::mt19937 generator{1};
};

TEST(GaussianScoring, EqualsThePlainLoopToTheLastBit) {
    RandomStates random;
    for (const size_t mixtures : {0, 1, 3, 7, 8, 9, 16, 17}) {
        for (const size_t numFeatures : {0, 1, 2, 15, 39}) {
            SCOPED_TRACE(testing::Message() << mixtures << " Gaussians of " << numFeatures);
            const std::vector<CSingleAccHmm> models = random.Models(mixtures, numFeatures);
            const gaussian_scoring scoring(models, numFeatures);
            const std::vector<float> x = random.Values(numFeatures, -4.0f, 4.0f);
            for (size_t state = 0; state < 6; ++state) {
                const double expected = PlainLikelihood(models[state / 3].states[state % 3], x);
                EXPECT_EQ(std::bit_cast<uint64_t>(scoring.Likelihood(state, x.data())),
                          std::bit_cast<uint64_t>(expected));
            }
        }
    }
}

TEST(GaussianScoring, LeavesOutGaussiansOfWeight0WithoutATrace) {
    RandomStates random;
    std::vector<CSingleAccHmm> models = random.Models(11, 4);
    std::vector<CGaussMixture>& mixtures = models[0].states[1].mixtures;
    for (const size_t m : {2, 7, 8, 9, 10}) {
        mixtures[m].weight = 0.0;
    }
    const std::vector<float> x = random.Values(4, -4.0f, 4.0f);
    EXPECT_EQ(gaussian_scoring(models, 4).Likelihood(1, x.data()),
              PlainLikelihood(models[0].states[1], x));
    mixtures[10].mean[0] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(std::isnan(gaussian_scoring(models, 4).Likelihood(1, x.data())));
}

TEST(GaussianScoring, AllKernelsOfThisMachineAgreeToTheLastBit) {
    RandomStates random;
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    for (const size_t numFeatures : {0, 1, 39}) {
        const std::vector<float> means = random.Values(numFeatures * kGaussianLanes, -1e3f, 1e3f);
        const std::vector<float> narrow = random.Values(numFeatures * kGaussianLanes, 0.0f, 1e6f);
        const std::vector<double> inverses(narrow.begin(), narrow.end());
        std::vector<float> x = random.Values(numFeatures, -1e3f, 1e3f);
        for (const float first : {0.0f, 1e30f, kInfinity}) {
            if (numFeatures != 0) {
                x[0] = first;
            }
            double expected[kGaussianLanes];
            PlainGaussianDistances(means.data(), inverses.data(), x.data(), numFeatures, expected);
            for (const gaussian_distances kernel : GaussianDistanceKernels()) {
                double distances[kGaussianLanes];
                kernel(means.data(), inverses.data(), x.data(), numFeatures, distances);
                for (size_t lane = 0; lane < kGaussianLanes; ++lane) {
                    EXPECT_EQ(std::bit_cast<uint64_t>(distances[lane]),
                              std::bit_cast<uint64_t>(expected[lane]));
                }
            }
        }
    }
}

TEST(GaussianScoring, DecaysThroughTheDenormalsToZero) {
    RandomStates random;
    std::vector<CSingleAccHmm> models = random.Models(1, 1);
    CGaussMixture& mixture = models[0].states[0].mixtures[0];
    mixture = CGaussMixture{};
    mixture.weight = mixture.gConst = 1.0;
    mixture.mean = {0.0f};
    mixture.inverseCovariance = {1.0f};
    const gaussian_scoring scoring(models, 1);
    for (const double d : {1480.0, 1489.0, 1490.0, 1490.5, 1499.0, 1501.0, 1e30}) {
        const float x = static_cast<float>(std::sqrt(d));
        EXPECT_EQ(scoring.Likelihood(0, &x), PlainLikelihood(models[0].states[0], {x})) << d;
    }
    const float denormal = static_cast<float>(std::sqrt(1485.0));
    EXPECT_GT(scoring.Likelihood(0, &denormal), 0.0);
    const float nothing = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(std::isnan(scoring.Likelihood(0, &nothing)));
}

} // namespace
} // namespace tessarin
