#pragma once

#include <vector>

#include "apps/train/corpus.h"
#include "apps/train/speech_changes.h"

namespace tessarin::training {

/// Moves the edges of pauses to where the level says that speech ends and begins.
///
/// A model that knows only synthesised speech, which ends at once, takes the fading end of what a
/// person says for silence. Speech is taken to last as long as its level stands above a third of
/// the way, in dB, from that of the pause to the highest beside it. The end of a phone only moves
/// back: a stop may end silently. A stop begins a little before the rise, in its silent closure;
/// how long the lips have been closed before nobody can hear.
void MovePauseEdges(const recording& speech, std::vector<phone_interval>& phones);

} // namespace tessarin::training
