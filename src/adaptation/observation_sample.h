#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "tessarin/error_codes.h"

namespace tessarin {

class IObservationStream;

/// Observations taken evenly from a stream of any length, in bounded memory.
class ObservationSample {
public:
    /// An observation has `featureCount` values.
    explicit ObservationSample(size_t featureCount) : numFeatures(featureCount) {}

    /// Reads `stream` to its end and keeps at most kMost observations of it. Returns its code.
    [[nodiscard]] error_code Read(IObservationStream& stream);

    /// One after the other.
    std::span<const float> GetValues() const { return values; }

    static constexpr size_t kMost = 4000;

private:
    void DropEverySecond();

    size_t numFeatures;
    std::vector<float> values;
};

} // namespace tessarin
