#pragma once

#include <memory>
#include <vector>

#include "apps/train/state_mixture.h"
#include "apps/train/state_transitions.h"

namespace tessarin {
class CAccousticHMM;
}

namespace tessarin::training {

/// Puts the engine's model together. States with fewer Gaussians than others get Gaussians of
/// weight 0.
std::unique_ptr<CAccousticHMM> AssembleModel(const std::vector<state_mixture>& mixtures,
                                             const transition_model& transitions);

} // namespace tessarin::training
