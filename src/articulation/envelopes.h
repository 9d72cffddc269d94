#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "articulation/markers/marker_lists.h"
#include "tessarin/articulator.h"
#include "tessarin/error_codes.h"

namespace tessarin {

struct envelope_settings {
    float frame_rate = 0.0f; ///< frames a second
    bool compress = false;   ///< leave out keys between equal ones
    bool common_key_times = false;
};

/// Builds one curve for each stretch of frames in which a phoneme shows without a gap, with a key
/// at each frame and a zero at either end, in order of their starts.
error_code BuildPhonemeEnvelopes(std::span<const articulation> frames,
                                 const envelope_settings& settings,
                                 std::vector<phn_env_marker>& envelopes);

/// Erases each inner point whose value equals both its neighbours'. Times stay as they are.
void CompressPoints(std::vector<envelope_point>& points);

/// Lowers points until no value differs from its neighbour's by more than `slope`; nothing is ever
/// raised.
void LimitSlope(std::span<envelope_point> points, float slope);

} // namespace tessarin
