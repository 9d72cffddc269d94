#include "text/pronunciation/decision_tree.h"

#include "base/text_copy.h"
#include "text/pronunciation/pronunciation_builder.h"

#include <string_view>

namespace tessarin {

void Evaluate(const t2p_decision_node& root, PronunciationBuilder& builder,
              std::span<const uint16_t> padded, size_t position) {
    const t2p_decision_node* node = &root;
    while (node != nullptr && node->phoneme[0] == '\0') {
        const uint16_t found = padded[position + static_cast<ptrdiff_t>(node->offset)];
        node = found == node->letter ? node->yes.get() : node->no.get();
    }
    if (node == nullptr) {
        return;
    }
    const std::string_view phonemes = FieldText(node->phoneme);
    if (phonemes != "_") {
        builder.AppendPhonemes(phonemes, false);
    }
}

} // namespace tessarin
