#include "apps/train/g2p_pruning.h"

#include <utility>

#include "base/text_copy.h"
#include "text/character_classes.h"

namespace tessarin::training {
namespace {

struct pruned_branch {
    std::unique_ptr<t2p_decision_node> root;
    information uncertainty = 0; ///< that its leaves leave
    size_t numLeaves = 1;
};

std::unique_ptr<t2p_decision_node> MakeLeaf(phone_chunk chunk) {
    auto leaf = std::make_unique<t2p_decision_node>();
    static_cast<void>(CopyText(leaf->phoneme, ChunkText(chunk)));
    return leaf;
}

bool IsLeafOf(const t2p_decision_node& node, const t2p_decision_node& other) {
    return node.phoneme[0] != '\0' && FieldText(node.phoneme) == FieldText(other.phoneme);
}

pruned_branch Prune(const grown_tree& tree, size_t number, double price) {
    const grown_node& node = tree.nodes[number];
    if (node.offset != 0) {
        pruned_branch yes = Prune(tree, node.yes, price);
        pruned_branch no = Prune(tree, node.no, price);
        const information left = yes.uncertainty + no.uncertainty;
        const size_t numLeaves = yes.numLeaves + no.numLeaves;
        const double cost = price * static_cast<double>(numLeaves - 1) * static_cast<double>(kBit);
        if (static_cast<double>(node.uncertainty - left) >= cost) {
            if (IsLeafOf(*yes.root, *no.root)) {
                return {std::move(yes.root), left, numLeaves};
            }
            auto root = std::make_unique<t2p_decision_node>();
            root->letter = node.letter;
            root->offset = node.offset;
            root->yes = std::move(yes.root);
            root->no = std::move(no.root);
            return {std::move(root), left, numLeaves};
        }
    }
    return {MakeLeaf(node.chunk), node.uncertainty, 1};
}

} // namespace

std::unique_ptr<t2p_decision_node> PruneTrees(std::span<const grown_tree> trees, double price) {
    std::unique_ptr<t2p_decision_node> root;
    std::unique_ptr<t2p_decision_node>* end = &root;
    for (const grown_tree& tree : trees) {
        *end = std::make_unique<t2p_decision_node>();
        (*end)->letter = CodeOf(tree.letter);
        (*end)->yes = Prune(tree, 0, price).root;
        end = &(*end)->no;
    }
    return root;
}

size_t CountLeaves(const t2p_decision_node& root) {
    if (root.phoneme[0] != '\0') {
        return 1;
    }
    return (root.yes != nullptr ? CountLeaves(*root.yes) : 0) +
           (root.no != nullptr ? CountLeaves(*root.no) : 0);
}

} // namespace tessarin::training
