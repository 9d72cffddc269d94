#include "features/lpc.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <span>

namespace tessarin {

namespace {

constexpr int32_t kMaxOrder = 31;
using order_values = std::array<float, kMaxOrder + 1>;

order_values Autocorrelate(std::span<const float> x, size_t order) {
    order_values r{};
    for (size_t k = 0; k <= order && k < x.size(); ++k) {
        for (size_t i = 0; i + k < x.size(); ++i) {
            r[k] += x[i] * x[i + k];
        }
    }
    return r;
}

/// The Levinson-Durbin recursion: predictor `a` and reflection coefficients `k` from the
/// autocorrelation `r`. Once the error is 0 nothing is left to predict and the rest stays 0.
void LevinsonDurbin(const order_values& r, size_t order, order_values& a, order_values& k) {
    float error = r[0];
    for (size_t m = 1; m <= order && error != 0.0f; ++m) {
        float sum = 0.0f;
        for (size_t j = 1; j < m; ++j) {
            sum += a[j] * r[m - j];
        }
        k[m] = (r[m] - sum) / error;
        order_values b = a;
        b[m] = k[m];
        for (size_t j = 1; j < m; ++j) {
            b[j] = a[j] - k[m] * a[m - j];
        }
        a = b;
        error *= 1.0f - k[m] * k[m];
    }
}

void Residual(std::span<const float> x, const order_values& a, size_t order, float* residual) {
    for (size_t i = 0; i < x.size(); ++i) {
        if (i <= order) {
            residual[i] = 0.0f;
            continue;
        }
        float predicted = 0.0f;
        for (size_t j = 1; j <= order; ++j) {
            predicted += a[j] * x[i - j];
        }
        residual[i] = x[i] - predicted;
    }
}

} // namespace

int32_t LPC::Analyse(const float* x, int32_t n, int32_t order, float* residual, float* coefficients,
                     float* reflection, float* logAreas) {
    if (x == nullptr || n < 1) {
        n = 0;
    }
    const std::span<const float> input(x, static_cast<size_t>(n));
    const auto wanted = static_cast<size_t>(std::clamp(order, 0, kMaxOrder));
    const size_t used = std::min(wanted, static_cast<size_t>(std::max(n - 1, 0)));
    order_values a{};
    order_values k{};
    LevinsonDurbin(Autocorrelate(input, used), used, a, k);

    if (coefficients != nullptr) {
        std::copy_n(a.begin(), wanted + 1, coefficients);
    }
    if (reflection != nullptr) {
        std::copy_n(k.begin(), wanted + 1, reflection);
    }
    if (logAreas != nullptr) {
        for (size_t m = 1; m <= wanted; ++m) {
            logAreas[m] = std::log((1.0f - k[m]) / (1.0f + k[m]));
        }
    }
    if (residual != nullptr) {
        Residual(input, a, used, residual);
    }
    return 0;
}

} // namespace tessarin
