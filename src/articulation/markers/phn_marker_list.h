#pragma once

#include <cstdint>

#include "articulation/markers/marker_list.h"
#include "articulation/markers/phn_marker.h"

namespace tessarin {

/// The phonemes of a result. Erasing a range cuts the phonemes that reach out of it.
class phn_marker_list : public marker_list<phn_marker> {
public:
    using marker_list<phn_marker>::marker_list;

    /// cut_range, or all of the list when both limits are -1.
    void remove_range(int32_t fromMs, int32_t toMs) override;
    /// Clears a span of time and keeps what sticks out of it.
    void cut_range(int32_t fromMs, int32_t toMs);
    /// Inserts the markers of `other` by time, after those that start together with them.
    void merge_in(const phn_marker_list& other);
    /// Puts the markers of `other` in place of what was there, and leaves no slivers at the seams.
    void replace_range(const phn_marker_list& other);

private:
    void JoinBefore(int32_t seamMs);
    void JoinBehind(int32_t seamMs);
};

} // namespace tessarin
