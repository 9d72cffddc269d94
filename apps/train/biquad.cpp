#include "apps/train/biquad.h"

#include <cmath>
#include <numbers>

namespace tessarin::training {
namespace {

/// The quantities that all designs begin with.
struct design {
    design(double rate, double frequency, double q)
        : cosine(std::cos(2.0 * std::numbers::pi * frequency / rate)),
          alpha(std::sin(2.0 * std::numbers::pi * frequency / rate) / (2.0 * q)) {}
    double cosine;
    double alpha;
};

} // namespace

biquad biquad::LowPass(double rate, double frequency, double q) {
    const design d(rate, frequency, q);
    const double b1 = 1.0 - d.cosine;
    return {b1 / 2.0, b1, b1 / 2.0, 1.0 + d.alpha, -2.0 * d.cosine, 1.0 - d.alpha};
}

biquad biquad::HighPass(double rate, double frequency, double q) {
    const design d(rate, frequency, q);
    const double b1 = 1.0 + d.cosine;
    return {b1 / 2.0, -b1, b1 / 2.0, 1.0 + d.alpha, -2.0 * d.cosine, 1.0 - d.alpha};
}

biquad biquad::Peak(double rate, double frequency, double q, double gainDb) {
    const design d(rate, frequency, q);
    const double a = std::pow(10.0, gainDb / 40.0);
    return {1.0 + d.alpha * a, -2.0 * d.cosine, 1.0 - d.alpha * a,
            1.0 + d.alpha / a, -2.0 * d.cosine, 1.0 - d.alpha / a};
}

biquad biquad::HighShelf(double rate, double frequency, double gainDb) {
    const design d(rate, frequency, std::numbers::sqrt2 / 2.0);
    const double a = std::pow(10.0, gainDb / 40.0);
    const double slope = 2.0 * std::sqrt(a) * d.alpha;
    const double up = a + 1.0;
    const double down = a - 1.0;
    return {a * (up + down * d.cosine + slope), -2.0 * a * (down + up * d.cosine),
            a * (up + down * d.cosine - slope), up - down * d.cosine + slope,
            2.0 * (down - up * d.cosine),       up - down * d.cosine - slope};
}

void biquad::Run(std::span<float> samples) const {
    double s1 = 0.0;
    double s2 = 0.0;
    for (float& sample : samples) {
        const double input = static_cast<double>(sample);
        const double output = n0 * input + s1;
        s1 = n1 * input - d1 * output + s2;
        s2 = n2 * input - d2 * output;
        sample = static_cast<float>(output);
    }
}

} // namespace tessarin::training
