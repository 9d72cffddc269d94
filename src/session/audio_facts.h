#pragma once

#include "tessarin/tessarin_c.h"

struct tessarin_audio;

namespace tessarin {

/// What is to be said of a recording before anything is looked for in it.
tessarin_audio_facts FindAudioFacts(const tessarin_audio& audio);

} // namespace tessarin
