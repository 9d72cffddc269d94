#pragma once

#include <cstdint>

namespace tessarin {

/// Fourier transform of real values: out[k] = sum over j of x[j] exp(2 pi i j k / n), unscaled.
class ForwardHalfComplexFFT {
public:
    virtual ~ForwardHalfComplexFFT() = default;

    /// Transforms the `n` values at `data` in place. Afterwards data[0] is bin 0, data[1] the bin
    /// at the Nyquist frequency, and data[2k], data[2k + 1] the real and imaginary parts of bin k.
    /// An `n` that is not a power of two, or below 2, leaves the values as they are.
    void Transform(float* data, uint32_t n);
};

} // namespace tessarin
