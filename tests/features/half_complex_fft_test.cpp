#include "features/half_complex_fft.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <numbers>
#include <vector>

#include "support/signals.h"

namespace tessarin {
namespace {

std::vector<float> Noise(uint32_t count) {
    return test::WhiteNoise(count, 32768.0f, 1);
}

std::vector<float> Transformed(std::vector<float> values) {
    ForwardHalfComplexFFT().Transform(values.data(), static_cast<uint32_t>(values.size()));
    return values;
}

std::complex<double> DirectBin(const std::vector<float>& x, size_t bin) {
    std::complex<double> sum = 0;
    for (size_t j = 0; j < x.size(); ++j) {
        const auto turns = static_cast<double>((j * bin) % x.size());
        sum += std::polar(double{x[j]}, 2 * std::numbers::pi * turns / double(x.size()));
    }
    return sum;
}

/// The packed complex transform and its split as the textbook writes them, one value at a time.
std::vector<float> PlainTransform(std::vector<float> packed) {
    using complex = std::complex<float>;
    const size_t n = packed.size() / 2;
    std::vector<complex> z(n);
    size_t bits = 0;
    while ((size_t{1} << bits) < n) {
        ++bits;
    }
    for (size_t i = 0; i < n; ++i) {
        size_t reversed = 0;
        for (size_t bit = 0; bit < bits; ++bit) {
            reversed |= ((i >> bit) & 1) << (bits - 1 - bit);
        }
        z[reversed] = {packed[2 * i], packed[2 * i + 1]};
    }
    const auto times = [](complex a, complex b) {
        return complex(a.real() * b.real() - a.imag() * b.imag(),
                       a.real() * b.imag() + a.imag() * b.real());
    };
    const auto advanced = [](complex w, float theta) {
        const float wpr = -2.0f * (std::sin(theta * 0.5f) * std::sin(theta * 0.5f));
        const float wpi = std::sin(theta);
        return complex(w.real() + (w.real() * wpr - w.imag() * wpi),
                       w.imag() + (w.imag() * wpr + w.real() * wpi));
    };
    for (size_t m = 2; m <= n; m *= 2) {
        complex w = 1;
        for (size_t k = 0; k < m / 2; ++k) {
            for (size_t i = k; i < n; i += m) {
                const complex product = times(w, z[i + m / 2]);
                z[i + m / 2] = z[i] - product;
                z[i] += product;
            }
            w = advanced(w, 6.2831855f / static_cast<float>(m));
        }
    }
    complex w = 1;
    for (size_t k = 1; k <= n / 2; ++k) {
        w = advanced(w, 3.1415927f / static_cast<float>(n));
        const complex even = 0.5f * (z[k] + std::conj(z[n - k]));
        const complex odd = 0.5f * (z[k] - std::conj(z[n - k]));
        const complex o(odd.imag(), -odd.real());
        z[k] = {even.real() + w.real() * o.real() - w.imag() * o.imag(),
                even.imag() + w.real() * o.imag() + w.imag() * o.real()};
        z[n - k] = {even.real() - w.real() * o.real() + w.imag() * o.imag(),
                    -even.imag() + w.real() * o.imag() + w.imag() * o.real()};
    }
    z[0] = {z[0].real() + z[0].imag(), z[0].real() - z[0].imag()};
    for (size_t i = 0; i < n; ++i) {
        packed[2 * i] = z[i].real();
        packed[2 * i + 1] = z[i].imag();
    }
    return packed;
}

TEST(ForwardHalfComplexFFT, GivesTheBinsOfTheDirectSum) {
    for (uint32_t n = 2; n <= 1024; n *= 2) {
        SCOPED_TRACE(n);
        const std::vector<float> x = Noise(n);
        const std::vector<float> out = Transformed(x);
        const double tolerance = 32768 * 1e-5 * n;
        EXPECT_NEAR(out[0], DirectBin(x, 0).real(), tolerance);
        EXPECT_NEAR(out[1], DirectBin(x, n / 2).real(), tolerance);
        for (uint32_t k = 1; k < n / 2; ++k) {
            const std::complex<double> bin = DirectBin(x, k);
            ASSERT_NEAR(out[2 * k], bin.real(), tolerance) << k;
            ASSERT_NEAR(out[2 * k + 1], bin.imag(), tolerance) << k;
        }
    }
}

TEST(ForwardHalfComplexFFT, RoundsAsThePlainRecurrenceDoes) {
    for (uint32_t n = 2; n <= 4096; n *= 2) {
        EXPECT_EQ(Transformed(Noise(n)), PlainTransform(Noise(n))) << n;
    }
}

TEST(ForwardHalfComplexFFT, LeavesOtherSizesAlone) {
    const std::vector<float> x = {1, 2, 3, 4, 5, 6};
    for (uint32_t n : {0u, 1u, 3u, 6u}) {
        std::vector<float> values = x;
        ForwardHalfComplexFFT().Transform(values.data(), n);
        EXPECT_EQ(values, x) << n;
    }
}

} // namespace
} // namespace tessarin
