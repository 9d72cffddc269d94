#include "features/half_complex_fft.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <utility>

#include "platform/floating_point.h"

namespace tessarin {

namespace {

/// The powers of exp(i angle), by the recurrence w += w (exp(i angle) - 1) with
/// exp(i angle) - 1 = -2 sin^2(angle / 2) + i sin(angle), which loses little in single precision
/// (Press et al., Numerical Recipes, 5.5).
class unit_powers {
public:
    explicit unit_powers(float angle) : stepIm(std::sin(angle)) {
        const float sine = std::sin(0.5f * angle);
        stepRe = -2.0f * (sine * sine);
    }

    void Advance() {
        const float oldRe = re;
        re += oldRe * stepRe - im * stepIm;
        im += im * stepRe + oldRe * stepIm;
    }

    float re = 1.0f;
    float im = 0.0f;

private:
    float stepRe;
    float stepIm;
};

void ReverseBits(float* data, uint32_t count) {
    for (uint32_t i = 1, reversed = 0; i < count; ++i) {
        uint32_t bit = count >> 1;
        for (; (reversed & bit) != 0; bit >>= 1) {
            reversed ^= bit;
        }
        reversed |= bit;
        if (i < reversed) {
            std::swap(data[2 * size_t{i}], data[2 * size_t{reversed}]);
            std::swap(data[2 * size_t{i} + 1], data[2 * size_t{reversed} + 1]);
        }
    }
}

/// Decimation in time: butterflies over growing spans of complex values in bit-reversed order.
void TransformComplex(float* data, uint32_t count) {
    for (uint32_t span = 2; span <= count; span *= 2) {
        unit_powers w(6.2831855f / static_cast<float>(span));
        for (uint32_t k = 0; k < span / 2; ++k) {
            for (size_t i = k; i < count; i += span) {
                float* a = data + 2 * i;
                float* b = a + span;
                const float re = w.re * b[0] - w.im * b[1];
                const float im = w.re * b[1] + w.im * b[0];
                b[0] = a[0] - re;
                b[1] = a[1] - im;
                a[0] += re;
                a[1] += im;
            }
            w.Advance();
        }
    }
}

/// Takes the transform of the even and the odd values, packed as one complex transform of `count`
/// points, apart and joins them into the transform of the `2 count` real values.
void SplitReal(float* data, uint32_t count) {
    unit_powers w(3.1415927f / static_cast<float>(count));
    for (uint32_t k = 1; k <= count / 2; ++k) {
        w.Advance();
        float* low = data + 2 * size_t{k};
        float* high = data + 2 * size_t{count - k};
        const float evenRe = 0.5f * (low[0] + high[0]);
        const float evenIm = 0.5f * (low[1] - high[1]);
        const float oddRe = 0.5f * (low[1] + high[1]);
        const float oddIm = -0.5f * (low[0] - high[0]);
        low[0] = evenRe + w.re * oddRe - w.im * oddIm;
        low[1] = evenIm + w.re * oddIm + w.im * oddRe;
        high[0] = evenRe - w.re * oddRe + w.im * oddIm;
        high[1] = -evenIm + w.re * oddIm + w.im * oddRe;
    }
    const float even = data[0];
    const float odd = data[1];
    data[0] = even + odd;
    data[1] = even - odd;
}

} // namespace

void ForwardHalfComplexFFT::Transform(float* data, uint32_t n) {
    if (n < 2 || !std::has_single_bit(n)) {
        return;
    }
    MaskFloatUnderflow();
    ReverseBits(data, n / 2);
    TransformComplex(data, n / 2);
    SplitReal(data, n / 2);
}

} // namespace tessarin
