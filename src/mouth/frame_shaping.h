#pragma once

#include <cstdint>
#include <set>
#include <span>
#include <vector>

#include "articulation/phoneme_label.h"
#include "mouth/loudness.h"
#include "mouth/mouth_classes.h"
#include "mouth/voice_level.h"
#include "tessarin/articulator.h"
#include "tessarin/tessarin_c.h"

namespace tessarin {

/// How the frames of an articulator become those of a mouth.
struct frame_shaping {
    mouth_strength strength;
    std::set<phoneme_label> closed; ///< what must be seen to close
    float frame_rate = 30.0f;       ///< frames a second
    float usual_db = 0.0f;          ///< the loudness of a usual vowel
    int32_t max_weights = 10;       ///< in a frame
    float slope = 0.0f;             ///< the most that a weight changes from frame to frame; 0: any
};

/// Shapes the frames of a track, in order of time: within a vowel the jaw follows the loudness,
/// each closure of lips and of teeth on the lip is seen in a frame of its own, and each class
/// leaves rest as far as it is asked to. With a slope, weights are lowered until none but those of
/// closures and rest jumps. The weights of a frame still sum to 1. Frames that nothing
/// shows in rest. Times become those of the frames' numbers, each rounded once.
void ShapeFrames(std::span<const tessarin_phoneme> phonemes, const LoudnessCurve& loudness,
                 const frame_shaping& shaping, std::vector<articulation>& frames);

} // namespace tessarin
