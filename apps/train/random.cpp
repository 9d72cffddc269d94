#include "apps/train/random.h"

#include <cmath>

namespace tessarin::training {
namespace {

/// The finaliser of SplitMix64 (Steele, Lea, Flood: Fast splittable pseudorandom number generators,
/// 2014).
uint64_t Mix(uint64_t value) {
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9u;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EBu;
    return value ^ (value >> 31);
}

} // namespace

random_source::random_source(std::string_view name, uint64_t stream) : state(Mix(stream + 1)) {
    for (const char letter : name) {
        state = Mix(state ^ static_cast<uint8_t>(letter));
    }
}

uint64_t random_source::Next() {
    return Mix(state += 0x9E3779B97F4A7C15u);
}

double random_source::Uniform() {
    return static_cast<double>(Next() >> 11) * 0x1p-53;
}

double random_source::LogUniform(double low, double high) {
    return low * std::pow(high / low, Uniform());
}

double random_source::Gaussian() {
    // Four numbers of 16 bits at once: their sum is near enough to a Gaussian for noise.
    const uint64_t bits = Next();
    const auto sum = static_cast<double>((bits & 0xFFFF) + ((bits >> 16) & 0xFFFF) +
                                         ((bits >> 32) & 0xFFFF) + (bits >> 48));
    constexpr double kMean = 2.0 * 65535.0;
    constexpr double kDeviation = 65536.0 * 0.57735026918962576; // sqrt(4 / 12)
    return (sum - kMean) / kDeviation;
}

} // namespace tessarin::training
