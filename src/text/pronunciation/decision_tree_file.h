#pragma once

#include "text/pronunciation/decision_tree.h"

#include <cstdint>
#include <memory>

namespace tessarin {

class ByteCursor;
class ByteWriter;

/// How far a tree looks to both sides of a letter.
struct tree_context {
    int32_t left = 0;  ///< smallest offset, at most 0
    int32_t right = 0; ///< largest offset, at least 0
};

/// The deepest tree that is read: it bounds the recursion of everything that walks a tree.
inline constexpr int kMaxTreeDepth = 4096;

/// Reads a tree, depth first, and widens `context` to what it asks. Fails the cursor for a tree
/// that is too deep, a text that does not fit its node, or an inner node without a `yes` branch.
std::unique_ptr<t2p_decision_node> ReadDecisionTree(ByteCursor& cursor, tree_context& context);

/// Appends a tree in the form that ReadDecisionTree takes.
void WriteDecisionTree(const t2p_decision_node& root, ByteWriter& file);

} // namespace tessarin
