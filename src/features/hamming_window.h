#pragma once

#include <span>

namespace tessarin {

/// Fills `window` with the Hamming window in its exact form, 25/46 - 21/46 cos(2 pi i / (n - 1)),
/// whose first side lobe is cancelled (R. W. Hamming, Digital Filters). At least two values.
void HammingWindow(std::span<float> window);

} // namespace tessarin
