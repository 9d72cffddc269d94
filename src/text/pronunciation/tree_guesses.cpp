#include "text/pronunciation/tree_guesses.h"

#include <algorithm>
#include <cstdint>

#include "base/text_copy.h"
#include "text/character_classes.h"
#include "text/pronunciation/grapheme_to_phone_rules.h"

namespace tessarin {

namespace {

constexpr size_t kLongestWord = 40;

/// What is said for one letter, and what the tree says when its last answer is turned round.
struct letter_guess {
    std::string phonemes;
    std::string other; ///< empty when there is none
    size_t depth = 0;  ///< how many questions were asked
};

using letters = std::vector<uint16_t>;

std::string PhonemesOf(const t2p_decision_node* leaf) {
    const std::string_view phonemes = leaf != nullptr ? FieldText(leaf->phoneme) : "";
    std::string said;
    std::ranges::copy_if(phonemes, std::back_inserter(said),
                         [](char each) { return each != '_' && !IsSpace(CodeOf(each)); });
    return said;
}

const t2p_decision_node* Answer(const t2p_decision_node& question, const letters& padded,
                                size_t position, bool isTurned) {
    const uint16_t found = padded[position + static_cast<ptrdiff_t>(question.offset)];
    return (found == question.letter) != isTurned ? question.yes.get() : question.no.get();
}

const t2p_decision_node* LeafBelow(const t2p_decision_node* node, const letters& padded,
                                   size_t position) {
    while (node != nullptr && node->phoneme[0] == '\0') {
        node = Answer(*node, padded, position, false);
    }
    return node;
}

letter_guess GuessLetter(const t2p_decision_node& root, const letters& padded, size_t position) {
    letter_guess guess;
    const t2p_decision_node* last = nullptr;
    const t2p_decision_node* node = &root;
    while (node != nullptr && node->phoneme[0] == '\0') {
        last = node;
        node = Answer(*node, padded, position, false);
        ++guess.depth;
    }
    guess.phonemes = PhonemesOf(node);
    if (last != nullptr) {
        guess.other =
            PhonemesOf(LeafBelow(Answer(*last, padded, position, true), padded, position));
    }
    return guess;
}

/// Whether a phoneme string is a vowel alone, whose names begin with one.
bool IsVowel(std::string_view phonemes) {
    return phonemes.size() == 2 && std::string_view("AEIOU").find(phonemes[0]) < 5;
}

std::string Join(const std::vector<letter_guess>& guesses, size_t turned) {
    std::string word;
    for (size_t i = 0; i < guesses.size(); ++i) {
        word += i == turned ? guesses[i].other : guesses[i].phonemes;
    }
    return word;
}

} // namespace

std::vector<std::string> GuessPronunciations(const CGraphemeToPhoneRules<char>& module,
                                             std::string_view word, size_t most) {
    if (module.decision_tree == nullptr || word.empty() || word.size() > kLongestWord) {
        return {};
    }
    const auto before = static_cast<size_t>(-module.left_context);
    letters padded(before, '-');
    for (const char letter : word) {
        const auto found = module.letter_substitutions.find(letter);
        const std::string_view written = found != module.letter_substitutions.end()
                                             ? std::string_view(found->second)
                                             : std::string_view(&letter, 1);
        std::ranges::transform(written, std::back_inserter(padded), CodeOf);
    }
    const size_t end = padded.size();
    padded.resize(end + static_cast<size_t>(module.right_context), '-');
    std::vector<letter_guess> guesses;
    for (size_t position = before; position < end; ++position) {
        if (module.tree_letters.contains(padded[position])) {
            guesses.push_back(GuessLetter(*module.decision_tree, padded, position));
        }
    }
    std::vector<size_t> unsure;
    for (size_t i = 0; i < guesses.size(); ++i) {
        const letter_guess& guess = guesses[i];
        if (IsVowel(guess.phonemes) && IsVowel(guess.other) && guess.phonemes != guess.other) {
            unsure.push_back(i);
        }
    }
    std::ranges::stable_sort(unsure, std::greater<>(), [&](size_t i) { return guesses[i].depth; });
    std::vector<std::string> words{Join(guesses, guesses.size())};
    for (size_t i = 0; i < unsure.size() && words.size() < most; ++i) {
        words.push_back(Join(guesses, unsure[i]));
    }
    return words;
}

} // namespace tessarin
