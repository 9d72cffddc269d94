#pragma once

namespace tessarin {

/// Sees to it that floating-point underflow does not trap in the calling thread: likelihoods decay
/// to denormals and to zero as a matter of course. Every other control bit, flush-to-zero too,
/// stays as the host set it, and nothing is restored.
void MaskFloatUnderflow();

} // namespace tessarin
