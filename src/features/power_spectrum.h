#pragma once

#include <cstdint>
#include <span>

namespace tessarin {

/// Turns the transform of `windowSize` samples, as ForwardHalfComplexFFT leaves it, into the powers
/// of bins 0 to windowSize / 2, in place from index 0 and divided by the window size. Returns the
/// sum of the powers with every bin scaled to the amplitude of a sine.
///
/// Kept: the bin at the Nyquist frequency has no power, as in the spectra that models are trained
/// on.
float PowerSpectrum(std::span<float> spectrum, int32_t windowSize);

} // namespace tessarin
