#pragma once

#include <cstdint>
#include <vector>

namespace tessarin {

/// Whether the marker has a time in common with the range, limits included. A range that ends
/// before it begins touches nothing.
template <class Marker> bool Touches(const Marker& marker, int32_t fromMs, int32_t toMs) {
    const auto within = [&](int32_t ms) { return fromMs <= ms && ms <= toMs; };
    return within(marker.start) || within(marker.end) ||
           (fromMs <= toMs && marker.start < fromMs && marker.end > toMs);
}

/// Markers in time order.
template <class Marker> class marker_list : public std::vector<Marker> {
public:
    using std::vector<Marker>::vector;
    marker_list() = default;
    marker_list(const marker_list&) = default;
    marker_list(marker_list&&) noexcept = default;
    marker_list& operator=(const marker_list&) = default;
    marker_list& operator=(marker_list&&) noexcept = default;
    virtual ~marker_list() = default;

    /// Erases the markers that touch the range; -1 for both limits erases all.
    virtual void remove_range(int32_t fromMs, int32_t toMs) {
        const bool all = fromMs == -1 && toMs == -1;
        std::erase_if(*this,
                      [&](const Marker& marker) { return all || Touches(marker, fromMs, toMs); });
    }
};

} // namespace tessarin
