#pragma once

#include <map>
#include <vector>

#include "articulation/markers/marker_lists.h"
#include "articulation/phoneme_label.h"

namespace tessarin {

using envelopes_by_label = std::map<phoneme_label, std::vector<phn_env_marker>>;

/// Gives every label a key at each time at which any label has one, for an application that keys
/// all its tracks at once: inner keys on the straight line between their neighbours, and curves of
/// value 0 where a label has none. Key times are multiples of the frame rate in milliseconds.
/// Returns the envelopes of all labels, label after label.
std::vector<phn_env_marker> GiveCommonKeyTimes(envelopes_by_label envelopes, float frameRate);

} // namespace tessarin
