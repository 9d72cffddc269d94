#include "apps/tessarin/readers/lexicon_summary.h"

#include "apps/tessarin/console/failure.h"
#include "tessarin/owned.h"

bool LooksLikeLexicon(const std::string& image) {
    return image.starts_with("TCID");
}

std::string DescribeLexicon(const std::string& path) {
    tessarin::flat::lexicon_owner lexicon;
    const int32_t code = tessarin_create_lexicon_from_file(path.c_str(), tessarin::Out(lexicon));
    if (code != TESSARIN_OK) {
        throw EngineFailure(path, code);
    }
    const tessarin_lexicon_facts& facts = *tessarin_get_lexicon_facts(lexicon.get());
    std::string lines;
    const auto addLine = [&lines](const std::string& name, const std::string& value) {
        constexpr size_t kColumn = 17;
        if (!value.empty()) {
            lines += name + std::string(kColumn - name.size(), ' ') + value + "\n";
        }
    };
    addLine("lexicon", "version " + std::to_string(facts.version));
    addLine("name", facts.name);
    addLine("language", std::to_string(facts.language));
    addLine("code page", std::to_string(facts.code_page));
    addLine("flags", std::to_string(facts.flags));
    addLine("locale", facts.locale);
    addLine("comment", facts.comment);
    addLine("information", facts.information);
    addLine("entries", std::to_string(facts.entry_count) + " of " +
                           std::to_string(facts.word_count) + " words");
    addLine("other words", (facts.has_tree != 0
                                ? "decision tree of " + std::to_string(facts.leaf_count) + " leaves"
                                : std::to_string(facts.rule_count) + " rules") +
                               ", section version " + std::to_string(facts.rules_version));
    return lines;
}
