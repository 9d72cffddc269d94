#pragma once

#include <span>

namespace tessarin {

/// The energy of the first difference of `samples` in decibels above a mean square of 1, plus 0.5
/// and never below 0; silence has 0.5. `previous` is the sample before the first one and receives
/// the last one. No samples have no energy.
float DecibelPower(std::span<const float> samples, float& previous);

} // namespace tessarin
