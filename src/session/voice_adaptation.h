#pragma once

#include "session/search_run.h"
#include "tessarin/error_codes.h"
#include "tessarin/owned.h"

namespace tessarin {

/// A copy of a model that fits a voice.
struct adapted_model {
    model_owner hmm; ///< null where the model itself fits
    float gain = 0.0f;
};

/// Fits the model to the stretch of the audio that is to be searched, as the options ask.
[[nodiscard]] error_code AdaptToVoice(const search_input& input, adapted_model& out);

} // namespace tessarin
