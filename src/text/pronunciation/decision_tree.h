#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace tessarin {

class PronunciationBuilder;

/// Node of a binary tree that pronounces one letter of a word by the letters around it. An inner
/// node, whose `phoneme` is empty, asks whether the letter at `offset` is `letter`.
struct t2p_decision_node {
    virtual ~t2p_decision_node() = default;

    char phoneme[16] = {}; ///< of a leaf: zero-terminated phonemes, `_` for a silent letter
    uint16_t letter = 0;
    int16_t offset = 0; ///< from the letter that is pronounced
    std::unique_ptr<t2p_decision_node> yes;
    std::unique_ptr<t2p_decision_node> no;
};

/// Appends what the tree says of the letter at `position` of `padded`, which reaches as far to
/// both sides as the tree's offsets do. A branch that is missing says nothing.
void Evaluate(const t2p_decision_node& root, PronunciationBuilder& builder,
              std::span<const uint16_t> padded, size_t position);

} // namespace tessarin
