#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "apps/train/g2p_alignment.h"

namespace tessarin::training {

/// Bits of information in fixed point: sums of them are exact, so that neither their order nor the
/// machine decides between questions that say as much.
using information = int64_t;
inline constexpr information kBit = 1 << 16;

/// A node as the words made it, whether it stays or not.
struct grown_node {
    phone_chunk chunk = 0;       ///< what a letter here most probably says
    information uncertainty = 0; ///< of what all the node's letters say, given nothing but the node
    uint8_t letter = 0;          ///< the question, as in t2p_decision_node
    int16_t offset = 0;          ///< 0 at the end of a branch
    size_t yes = 0;
    size_t no = 0;
};

/// All that could be asked to find how one letter is said. The first node is the root.
struct grown_tree {
    char letter = 0;
    size_t count = 0; ///< of the letters it grew from
    std::vector<grown_node> nodes;
};

/// Grows a tree for each letter, the most frequent letter first. Each node asks the question that
/// says most about what its letters say, of up to `reach` letters to both sides, until a node's
/// letters all say the same or no question separates them.
std::vector<grown_tree> GrowTrees(std::span<const aligned_word> words, int16_t reach,
                                  size_t numThreads);

} // namespace tessarin::training
