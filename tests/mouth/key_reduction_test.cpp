#include "mouth/key_reduction.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

#include <gmock/gmock.h>

#include "tessarin/error_codes.h"
#include "tessarin/tessarin_c.h"

namespace {

using tessarin::ReduceKeys;
using testing::ElementsAre;

std::vector<int32_t> Times(size_t count, int32_t stepMs = 10) {
    std::vector<int32_t> times(count);
    std::iota(times.begin(), times.end(), 0);
    std::ranges::transform(times, times.begin(), [&](int32_t i) { return i * stepMs; });
    return times;
}

/// The greatest distance of the lines from one key to the next from the weights between them.
double FarthestOff(const std::vector<int32_t>& times, const std::vector<double>& weights,
                   size_t width, const std::vector<uint32_t>& keys) {
    double farthest = 0.0;
    for (size_t k = 0; k + 1 < keys.size(); ++k) {
        for (size_t row = keys[k]; row <= keys[k + 1]; ++row) {
            for (size_t i = 0; i < width; ++i) {
                const double from = weights[keys[k] * width + i];
                const double to = weights[keys[k + 1] * width + i];
                const double share = static_cast<double>(times[row] - times[keys[k]]) /
                                     (times[keys[k + 1]] - times[keys[k]]);
                farthest = std::max(
                    farthest, std::abs(from + share * (to - from) - weights[row * width + i]));
            }
        }
    }
    return farthest;
}

/// The fewest keys, by trying every subset of the inner times.
size_t FewestByTrial(const std::vector<int32_t>& times, const std::vector<double>& weights,
                     double tolerance) {
    const auto last = static_cast<uint32_t>(times.size() - 1);
    size_t fewest = times.size();
    for (uint32_t chosen = 0; chosen < 1u << (last - 1); ++chosen) {
        std::vector<uint32_t> keys = {0};
        for (uint32_t i = 1; i < last; ++i) {
            if ((chosen >> (i - 1) & 1) != 0) {
                keys.push_back(i);
            }
        }
        keys.push_back(last);
        if (keys.size() < fewest && FarthestOff(times, weights, 1, keys) <= tolerance) {
            fewest = keys.size();
        }
    }
    return fewest;
}

TEST(ReduceKeys, KeepsWhereACurveBends) {
    const std::vector<double> weights = {0, 0, 0, 0.25, 0.5, 0.75, 1, 1, 1, 0.5, 0, 0};
    EXPECT_THAT(ReduceKeys(Times(12), weights, 1, 0.0), ElementsAre(0, 2, 6, 8, 10, 11));
    EXPECT_THAT(ReduceKeys({}, {}, 1, 0.0), ElementsAre());
    EXPECT_THAT(ReduceKeys(Times(1), std::vector{0.5}, 1, 0.0), ElementsAre(0));
    EXPECT_THAT(ReduceKeys(Times(5000), std::vector(5000, 0.5), 1, 0.0), ElementsAre(0, 4999));
}

TEST(ReduceKeys, IsAsFewAsAnySubsetOfTheTimes) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> weight(0.0, 1.0);
    const std::vector<int32_t> times = {0, 33, 67, 100, 133, 150, 167, 200, 233, 267, 300};
    for (int trial = 0; trial < 25; ++trial) {
        std::vector<double> weights(times.size());
        std::ranges::generate(weights, [&] { return weight(random); });
        for (const double tolerance : {0.0, 0.1, 0.3}) {
            const auto keys = ReduceKeys(times, weights, 1, tolerance);
            EXPECT_LE(FarthestOff(times, weights, 1, keys), tolerance + 1e-6);
            EXPECT_EQ(keys.size(), FewestByTrial(times, weights, tolerance + 1e-9));
        }
    }
}

TEST(ReduceKeys, HoldsEveryTrackThatSharesTheKeys) {
    std::vector<double> weights;
    const auto times = Times(3000, 17);
    for (size_t i = 0; i < times.size(); ++i) {
        const double x = static_cast<double>(i);
        weights.insert(weights.end(), {0.5 + 0.5 * std::sin(x / 9), 0.25, std::fmod(x, 50) / 50});
    }
    const auto keys = ReduceKeys(times, weights, 3, 0.02);
    EXPECT_LE(FarthestOff(times, weights, 3, keys), 0.0201);
    EXPECT_LT(keys.size(), times.size() / 2);
    EXPECT_EQ(keys.back(), 2999u);
}

TEST(ReduceKeys, RejectsWhatIsNotATrack) {
    const std::vector<int32_t> times = {0, 10, 20};
    const std::vector<double> weights = {0.0, 0.5, 1.0};
    std::vector<uint32_t> kept(3);
    uint32_t count = 9;
    const auto reduce = [&](const std::vector<int32_t>& at, const std::vector<double>& from,
                            double tolerance, uint32_t width = 1) {
        return tessarin_reduce_keys(at.data(), from.data(), 3, width, tolerance, kept.data(),
                                    &count);
    };
    EXPECT_EQ(reduce(times, weights, 0.0), TESSARIN_OK);
    EXPECT_EQ(count, 2u);
    EXPECT_THAT(kept, ElementsAre(0, 2, 0));
    EXPECT_EQ(reduce({0, 10, 10}, weights, 0.0), tessarin::kInvalidArgument);
    EXPECT_EQ(reduce(times, weights, 0.0, 0), tessarin::kInvalidArgument);
    EXPECT_EQ(reduce(times, weights, -0.1), tessarin::kOutOfRange);
    EXPECT_EQ(reduce(times, weights, std::nan("")), tessarin::kOutOfRange);
    EXPECT_EQ(reduce(times, {0, std::numeric_limits<double>::infinity(), 1}, 0.1),
              tessarin::kOutOfRange);
    EXPECT_EQ(count, 0u);
}

} // namespace
