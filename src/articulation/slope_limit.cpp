#include "articulation/envelopes.h"

#include <algorithm>
#include <cstddef>

namespace tessarin {
namespace {

/// Lowers the larger of two neighbours to `slope` above the other; whether it did.
bool LimitPair(envelope_point& a, envelope_point& b, float slope) {
    if (b.value > a.value + slope) {
        b.value = a.value + slope;
        return true;
    }
    if (a.value > b.value + slope) {
        a.value = b.value + slope;
        return true;
    }
    return false;
}

/// With a slope below 0 values fall for ever, and the number of passes bounds it. So does a number
/// of steps, to return in time from curves that no speech has.
void LimitInPasses(std::span<envelope_point> points, float slope) {
    constexpr size_t kMostSteps = 100'000'000;
    const size_t passes = std::min(3 * points.size(), kMostSteps / points.size());
    bool changed = true;
    for (size_t pass = 0; pass < passes && changed; ++pass) {
        changed = false;
        for (size_t i = 1; i < points.size(); ++i) {
            changed |= LimitPair(points[i - 1], points[i], slope);
        }
    }
}

} // namespace

/// Limits pass from point to point, forwards and backwards, and a slope of 0 or more makes a limit
/// only weaker on its way: one sweep in each direction leaves what passes over all pairs come to.
void LimitSlope(std::span<envelope_point> points, float slope) {
    if (points.empty()) {
        return;
    }
    if (!(slope >= 0.0f)) {
        LimitInPasses(points, slope);
        return;
    }
    for (size_t i = 1; i < points.size(); ++i) {
        points[i].value = std::min(points[i].value, points[i - 1].value + slope);
    }
    for (size_t i = points.size() - 1; i > 0; --i) {
        points[i - 1].value = std::min(points[i - 1].value, points[i].value + slope);
    }
}

} // namespace tessarin
