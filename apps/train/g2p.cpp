#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <CLI/CLI.hpp>

#include "apps/train/g2p_evaluation.h"
#include "apps/train/g2p_lexicon.h"
#include "apps/train/g2p_pruning.h"
#include "apps/train/g2p_training.h"
#include "apps/train/g2p_words.h"
#include "base/error_messages.h"

using namespace tessarin;
using namespace tessarin::training;

namespace {

using language_module = CGraphemeToPhoneRules<char>;

struct options {
    std::string lexicon;
    std::string output;
    bool evaluates = false;
    g2p_settings settings;
};

void Require(error_code code, const std::string& path) {
    if (code != kNoError) {
        throw std::runtime_error(path + ": " + ErrorMessage(code));
    }
}

std::unique_ptr<language_module> Learn(const language_module& language,
                                       std::span<const spelled_word> words, double leafPrice,
                                       const g2p_settings& settings) {
    auto learnt = LearnTree(language, words, leafPrice, settings);
    if (learnt == nullptr || learnt->decision_tree == nullptr) {
        throw std::runtime_error("nothing can be learnt from this lexicon");
    }
    std::printf("%zu words make a tree of %zu leaves\n", words.size(),
                CountLeaves(*learnt->decision_tree));
    return learnt;
}

void PrintErrors(const char* name, language_module& module, std::span<const spelled_word> words) {
    const pronunciation_errors errors = MeasureErrors(module, words);
    std::printf("%-14s  %5.2f %% of the phonemes wrong, %5.2f %% of the words right\n", name,
                errors.PhoneErrorPercent(), errors.RightWordPercent());
}

/// Compares the built-in rules with a tree that knows nothing of the words that are asked.
void Evaluate(const language_module& language, std::span<const spelled_word> words,
              double leafPrice, const g2p_settings& settings) {
    const auto asked = Select(words, {word_use::kMeasure});
    const auto known = Select(words, {word_use::kGrow, word_use::kChoose});
    const auto tree = Learn(language, known, leafPrice, settings);
    language_module rules;
    rules.LoadBuiltinEnglish();
    std::printf("%zu other words are asked\n", asked.size());
    PrintErrors("built-in rules", rules, asked);
    PrintErrors("tree", *tree, asked);
}

void Train(const options& chosen) {
    CLearnerLexicon lexicon;
    Require(lexicon.Open(chosen.lexicon.c_str()), chosen.lexicon);
    const auto words = ReadSpelledWords(lexicon.GetEntries());
    const double leafPrice = ChooseLeafPrice(lexicon.GetLanguage(), words, chosen.settings);
    std::printf("a leaf is worth %.1f bits\n", leafPrice);
    if (chosen.evaluates) {
        Evaluate(lexicon.GetLanguage(), words, leafPrice, chosen.settings);
    }
    if (!chosen.output.empty()) {
        const auto learnt = Learn(lexicon.GetLanguage(), words, leafPrice, chosen.settings);
        Require(lexicon.Save(chosen.output.c_str(), *learnt), chosen.output);
    }
}

} // namespace

int main(int argc, char** argv) {
    options chosen;
    chosen.settings.numThreads = std::max(std::thread::hardware_concurrency(), 1u);
    CLI::App app("Learns from a lexicon how words are said that are not in it, and writes what it "
                 "learnt into a lexicon file: a decision tree that asks for the letters around "
                 "each letter.",
                 "tessarin-train-g2p");
    app.add_option("LEXICON", chosen.lexicon, "Lexicon file, or lexicon text of English")
        ->required();
    app.add_option("-o,--output", chosen.output,
                   "Lexicon file to write: LEXICON with the tree in place of its rules");
    app.add_flag("--evaluate", chosen.evaluates,
                 "Learn from nine tenths, and compare with the built-in English rules on the rest");
    app.add_option("--reach", chosen.settings.reach, "Letters to both sides that count [5]")
        ->check(CLI::Range(1, 16));
    app.add_option("--threads", chosen.settings.numThreads, "Threads [as many as processors]")
        ->check(CLI::Range(1, 256));
    CLI11_PARSE(app, argc, argv);
    if (chosen.output.empty() && !chosen.evaluates) {
        std::fputs("tessarin-train-g2p: what is to be done? Give -o or --evaluate.\n", stderr);
        return 1;
    }
    try {
        Train(chosen);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tessarin-train-g2p: %s\n", error.what());
        return 1;
    }
    return 0;
}
