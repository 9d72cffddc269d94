#pragma once

#include <span>

namespace tessarin {

/// First-order high-pass in place, in single precision: y[n] = x[n] - coefficient * x[n-1].
/// `previous` is x[-1] on entry and the last input on return, so that a signal gives the same
/// output however it is cut into blocks.
void PreEmphasize(std::span<float> samples, float coefficient, float& previous);

} // namespace tessarin
