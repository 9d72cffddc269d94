#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "base/error_messages.h"
#include "base/text_copy.h"
#include "base/whole_file.h"
#include "tessarin/error_codes.h"
#include "text/lexicon/cm_dict.h"
#include "text/lexicon/lexicon_file.h"
#include "text/lexicon/word_order.h"
#include "text/pronunciation/grapheme_to_phone_rules.h"

namespace {

using namespace tessarin;

constexpr uint32_t kEnglish = 9;
constexpr uint32_t kWesternEurope = 1252;

struct make_options {
    std::string words;
    std::string output;
    std::string name = "English (United States)";
    std::string comment;
    std::string information;
};

std::string ReadWords(const std::string& path) {
    uint32_t size = 0;
    const auto text = ReadWholeFile(path.c_str(), &size, false);
    if (text == nullptr || size > uint32_t{INT32_MAX}) {
        throw std::runtime_error(path + " does not open");
    }
    return {text.get(), text.get() + size};
}

void Load(CCmDict& dict, const std::string& text) {
    if (!dict.LoadText(text.data(), static_cast<int32_t>(text.size()))) {
        throw std::bad_alloc();
    }
}

/// The entries of a lexicon text in the order of a sorted lexicon. Those of one word keep theirs,
/// which is the order of preference.
std::string Sorted(const std::string& text) {
    CCmDict dict;
    Load(dict, text);
    std::vector<CPronunciationRec> entries(dict.GetEntries().begin(), dict.GetEntries().end());
    std::ranges::stable_sort(entries, [](const auto& first, const auto& second) {
        return IsWordBelow(WordOf(first), WordOf(second));
    });
    std::string sorted;
    for (const CPronunciationRec& entry : entries) {
        sorted.append(WordOf(entry)).append("=");
        sorted.append(entry.pronunciation, entry.pronunciation_length).append("\n");
    }
    return sorted;
}

TranscriberInfo Describe(const make_options& options) {
    TranscriberInfo info = {};
    info.language = kEnglish;
    info.code_page = kWesternEurope;
    info.flags = kCodePageKnown;
    info.flags |= options.information.empty() ? 0u : kInfoStringStored;
    info.flags |= options.comment.empty() ? 0u : kCommentStored;
    if (!CopyText(info.name, options.name) || !CopyText(info.comment, options.comment)) {
        throw std::runtime_error("a name or a comment has 63 characters at most");
    }
    return info;
}

void Make(const make_options& options) {
    CGraphemeToPhoneRules<char> language;
    language.LoadBuiltinEnglish();
    CCmDict dict;
    Load(dict, Sorted(ReadWords(options.words)));
    const error_code code = WriteLexiconFile(Describe(options), language, dict,
                                             options.output.c_str(), options.information);
    if (code != kNoError) {
        throw std::runtime_error(options.output + ": " + ErrorMessage(code));
    }
    std::printf("%zu entries\n", dict.GetEntries().size());
}

} // namespace

int main(int argc, char** argv) {
    make_options options;
    CLI::App app("Makes a lexicon file of the built-in English rules and a lexicon text.",
                 "tessarin-make-lexicon");
    app.add_option("WORDS", options.words, "Lexicon text: lines of word=phonemes")->required();
    app.add_option("OUTPUT", options.output, "Lexicon file to write")->required();
    app.add_option("--name", options.name, "Name of the language");
    app.add_option("--comment", options.comment, "One line about the file");
    app.add_option("--information", options.information, "Text of any length, such as licences");
    CLI11_PARSE(app, argc, argv);
    try {
        Make(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tessarin-make-lexicon: %s\n", error.what());
        return 1;
    }
    return 0;
}
