#include "text/pronunciation/decision_tree_file.h"

#include "base/byte_cursor.h"
#include "base/byte_writer.h"
#include "base/text_copy.h"

#include <algorithm>
#include <string_view>

namespace tessarin {
namespace {

/// First byte of a text that stands as a string, since it is longer than two characters.
constexpr uint8_t kLongText = 1;
constexpr size_t kShortTextLength = 2;

std::unique_ptr<t2p_decision_node> ReadNode(ByteCursor& cursor, tree_context& context, int depth);

/// Reads the mark of a branch, and the branch if there is one.
std::unique_ptr<t2p_decision_node> ReadBranch(ByteCursor& cursor, tree_context& context,
                                              int depth) {
    return cursor.ReadU8() != 0 ? ReadNode(cursor, context, depth + 1) : nullptr;
}

/// Whether the node is a leaf.
bool ReadText(ByteCursor& cursor, t2p_decision_node& node) {
    const uint8_t first = cursor.ReadU8();
    if (first != kLongText) {
        node.phoneme[0] = static_cast<char>(first);
        const auto second = static_cast<char>(cursor.ReadU8());
        node.phoneme[1] = first != 0 ? second : '\0';
        return first != 0;
    }
    const std::string_view text = cursor.ReadString();
    if (text.empty() || !CopyText(node.phoneme, text)) {
        cursor.Fail();
    }
    return true;
}

std::unique_ptr<t2p_decision_node> ReadNode(ByteCursor& cursor, tree_context& context, int depth) {
    auto node = std::make_unique<t2p_decision_node>();
    if (ReadText(cursor, *node)) {
        return node;
    }
    node->letter = cursor.ReadU16();
    node->offset = cursor.ReadI16();
    context.left = std::min<int32_t>(context.left, node->offset);
    context.right = std::max<int32_t>(context.right, node->offset);
    if (cursor.Failed() || depth == kMaxTreeDepth) {
        cursor.Fail();
        return node;
    }
    node->yes = ReadBranch(cursor, context, depth);
    if (node->yes == nullptr) {
        cursor.Fail();
    }
    node->no = ReadBranch(cursor, context, depth);
    return node;
}

void WriteBranch(const t2p_decision_node* branch, ByteWriter& file) {
    file.WriteU8(branch != nullptr ? 1 : 0);
    if (branch != nullptr) {
        WriteDecisionTree(*branch, file);
    }
}

void WriteText(const t2p_decision_node& node, ByteWriter& file) {
    const std::string_view text = FieldText(node.phoneme);
    if (text.size() > kShortTextLength || text.starts_with(static_cast<char>(kLongText))) {
        file.WriteU8(kLongText);
        file.WriteString(text);
    } else {
        file.WriteU8(static_cast<uint8_t>(node.phoneme[0]));
        file.WriteU8(static_cast<uint8_t>(node.phoneme[1]));
    }
}

} // namespace

std::unique_ptr<t2p_decision_node> ReadDecisionTree(ByteCursor& cursor, tree_context& context) {
    return ReadNode(cursor, context, 1);
}

void WriteDecisionTree(const t2p_decision_node& root, ByteWriter& file) {
    WriteText(root, file);
    if (root.phoneme[0] != '\0') {
        return;
    }
    file.WriteU16(root.letter);
    file.WriteU16(static_cast<uint16_t>(root.offset));
    WriteBranch(root.yes.get(), file);
    WriteBranch(root.no.get(), file);
}

} // namespace tessarin
