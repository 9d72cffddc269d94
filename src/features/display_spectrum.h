#pragma once

#include <span>

namespace tessarin {

/// Fills `window` with the Hamming window by its usual rounded constants,
///   0.54 - 0.46 cos(2 pi i / (n - 1)).
/// Kept: not the exact form that the analysis uses; pictures are compared with older ones. At least
/// two values.
void DisplayWindow(std::span<float> window);

/// Turns the transform of n samples, as ForwardHalfComplexFFT leaves it, into the display levels of
/// bins 0 to n / 2, in place from index 0: 2 * 20 log10(|X| / (n / 2)), truncated, from 0 to 255.
/// At least 4 values. Returns 20 log10 of the root of the power of all these bins, not below 0.
float DisplaySpectrum(std::span<float> transform);

} // namespace tessarin
