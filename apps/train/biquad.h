#pragma once

#include <span>

namespace tessarin::training {

/// A filter of two poles and two zeros. The designs are those of R. Bristow-Johnson's audio EQ
/// cookbook.
class biquad {
public:
    static biquad LowPass(double rate, double frequency, double q);
    static biquad HighPass(double rate, double frequency, double q);
    static biquad Peak(double rate, double frequency, double q, double gainDb);
    static biquad HighShelf(double rate, double frequency, double gainDb);

    /// Filters in place, from rest.
    void Run(std::span<float> samples) const;

private:
    biquad(double b0, double b1, double b2, double a0, double a1, double a2)
        : n0(b0 / a0), n1(b1 / a0), n2(b2 / a0), d1(a1 / a0), d2(a2 / a0) {}

    double n0, n1, n2, d1, d2;
};

} // namespace tessarin::training
