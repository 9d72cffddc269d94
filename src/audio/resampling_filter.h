#pragma once

#include <cstdint>
#include <span>

namespace tessarin {

/// Designs the low-pass of a polyphase rate converter: a sinc of the relative cutoff `fc` under the
/// four-term window of Blackman and Harris,
///
///     h[i] = w(t) * 0.9 fc * sin(x) / x,   x = (i - N/2) * pi fc / L,   t = 2 pi i / N,
///     w(t) = 0.35875 - 0.48829 cos t + 0.14128 cos 2t - 0.01168 cos 3t
///
/// for the N taps of `coefficients` and L = `numPhases`, which divides N (F. J. Harris, "On the Use
/// of Windows for Harmonic Analysis with the Discrete Fourier Transform", 1978). Tap i becomes
/// place i / L of phase i % L; a phase occupies N / L neighbours.
void DesignResamplingFilter(std::span<float> coefficients, int32_t numPhases, float fc);

} // namespace tessarin
