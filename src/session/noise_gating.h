#pragma once

#include <memory>

#include "session/audio_samples.h"

namespace tessarin {

/// Silences the quiet stretches of a copy of `audio`; `options` may be null. `levelDb` receives the
/// level below which a stretch is quiet.
error_code GateAudio(const tessarin_audio& audio, const tessarin_gate_options* options,
                     float& levelDb, std::unique_ptr<tessarin_audio>& out);

} // namespace tessarin
