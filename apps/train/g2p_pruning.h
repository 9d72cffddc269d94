#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "apps/train/g2p_tree.h"
#include "text/pronunciation/decision_tree.h"

namespace tessarin::training {

/// One tree that first asks for the letter. A branch stays where it saves at least `price` bits for
/// each leaf that it has more than one.
std::unique_ptr<t2p_decision_node> PruneTrees(std::span<const grown_tree> trees, double price);

size_t CountLeaves(const t2p_decision_node& root);

} // namespace tessarin::training
