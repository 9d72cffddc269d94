#include "apps/train/g2p_training.h"

#include <utility>
#include <vector>

#include "apps/train/g2p_alignment.h"
#include "apps/train/g2p_evaluation.h"
#include "apps/train/g2p_pruning.h"
#include "apps/train/g2p_tree.h"
#include "base/byte_writer.h"
#include "text/character_classes.h"

namespace tessarin::training {
namespace {

using language_module = CGraphemeToPhoneRules<char>;

/// From the largest tree to the smallest.
constexpr double kLeafPrices[] = {1.0, 2.0, 2.5, 3.0, 3.5, 4.0, 5.0, 6.0, 8.0};

/// A module that is written and read again.
std::unique_ptr<language_module> CopyOf(const language_module& module) {
    ByteWriter section;
    module.WriteLetterToSound(section);
    const uint8_t* position = section.Content().data();
    auto remaining = static_cast<uint32_t>(section.Content().size());
    auto copy = std::make_unique<language_module>();
    if (copy->LoadLetterToSound(&position, &remaining, nullptr) != kNoError) {
        return nullptr;
    }
    return copy;
}

std::unique_ptr<language_module> WithTree(const language_module& language,
                                          std::span<const grown_tree> trees, double leafPrice) {
    const std::unique_ptr<language_module> copy = CopyOf(language);
    if (copy == nullptr) {
        return nullptr;
    }
    copy->decision_tree = PruneTrees(trees, leafPrice);
    copy->tree_letters.clear();
    for (const grown_tree& tree : trees) {
        copy->tree_letters.insert(CodeOf(tree.letter));
    }
    return CopyOf(*copy);
}

std::vector<grown_tree> GrowFrom(std::span<const spelled_word> words,
                                 const g2p_settings& settings) {
    return GrowTrees(AlignLetters(words), settings.reach, settings.numThreads);
}

} // namespace

double ChooseLeafPrice(const language_module& language, std::span<const spelled_word> words,
                       const g2p_settings& settings) {
    const auto trees = GrowFrom(Select(words, {word_use::kGrow}), settings);
    const auto judges = Select(words, {word_use::kChoose});
    double best = kLeafPrices[0];
    size_t fewest = SIZE_MAX;
    for (const double price : kLeafPrices) {
        const auto module = WithTree(language, trees, price);
        const size_t wrong =
            module != nullptr ? MeasureErrors(*module, judges).numWrongPhones : SIZE_MAX;
        if (wrong <= fewest) { // of equals the smaller tree
            fewest = wrong;
            best = price;
        }
    }
    return best;
}

std::unique_ptr<language_module> LearnTree(const language_module& language,
                                           std::span<const spelled_word> words, double leafPrice,
                                           const g2p_settings& settings) {
    return WithTree(language, GrowFrom(words, settings), leafPrice);
}

} // namespace tessarin::training
