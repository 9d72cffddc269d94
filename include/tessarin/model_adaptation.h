#pragma once

#include <cstdint>

#include "tessarin/acoustic_model.h"
#include "tessarin/export.h"
#include "tessarin/observation_stream.h"

namespace tessarin {

/// What voices that a model knows gain by an adaptation at most. They are heard a little worse with
/// one, strangers much better.
inline constexpr float kKnownVoiceGain = 0.5f;

} // namespace tessarin

/// Makes a copy of `model` that fits the voice and the microphone of a recording: what lies between
/// them and the model is estimated from the audio alone, without a text and without a search, and
/// added to the means. It serves searches without a text; a search for a text gains little by it.
/// `observations`, made for `model`, is read to its end and is of no use afterwards: open another
/// one, for the copy, for the search. The copy has the statistics of sequences and the limits that
/// `model` has now, and neither needs the other from then on.
///
/// `*gain` (may be null) receives by how much the logarithm of the likelihood of an observation
/// grows, on average: about 0.3 for a voice that the model knows, more than 1 for a stranger, 6 and
/// more by telephone. `leastGain` is what makes a copy worth while: kKnownVoiceGain, or 0 for one
/// in any case. Returns 0 with the copy in `*out`, to be freed by DestroyAccHMM, or with null when
/// the gain is less; or, with `*out` null, 1 without memory, 2 for null, and the code of a failed
/// read.
TESSARIN_API int32_t CreateAdaptedAccHMM(const tessarin::CAccousticHMM* model,
                                         tessarin::IObservationStream* observations,
                                         float leastGain, float* gain,
                                         tessarin::CAccousticHMM** out);
