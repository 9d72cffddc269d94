#pragma once

#include <string>

#include "tools/tessarin/live_mouth.h"

/// A JSON object in a line of its own: the stretch, its phonemes and its frames, all in
/// milliseconds since the audio began.
std::string WriteLiveJson(const live_stretch& stretch);

/// A line a frame: when it begins, in milliseconds, and LABEL=WEIGHT for each sound in it.
std::string WriteLiveVisemes(const live_stretch& stretch);
