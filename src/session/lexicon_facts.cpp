#include "session/lexicon_facts.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <vector>

#include "base/byte_cursor.h"
#include "text/lexicon/cm_dict.h"
#include "text/lexicon/lexicon_file.h"
#include "text/lexicon/word_order.h"
#include "text/transcriber.h"

namespace tessarin {

namespace {

uint32_t CountLeaves(const t2p_decision_node* node) {
    if (node == nullptr || node->phoneme[0] != '\0') {
        return node != nullptr ? 1 : 0;
    }
    return CountLeaves(node->yes.get()) + CountLeaves(node->no.get());
}

uint32_t CountRules(const CGraphemeToPhoneRules<char>& module) {
    size_t rules = 0;
    for (const std::vector<GraphemeRule>& table : module.owned_rules) {
        rules += table.size() - 1; // without the row that ends it
    }
    return static_cast<uint32_t>(rules);
}

uint32_t CountWords(std::span<const CPronunciationRec> entries) {
    std::vector<std::string_view> words;
    for (const CPronunciationRec& entry : entries) {
        words.push_back(WordOf(entry));
    }
    std::ranges::sort(words, IsWordBelow);
    return static_cast<uint32_t>(std::ranges::unique(words, IsSameWord).begin() - words.begin());
}

} // namespace

error_code LookIntoLexicon(const void* data, uint32_t size,
                           std::unique_ptr<tessarin_lexicon>& out) {
    counted_ptr<CTranscriber> transcriber;
    CCmDict* dict = nullptr;
    const error_code code = LoadTranscriberAndDict(data, size, transcriber, dict);
    if (code != kNoError) {
        return code;
    }
    out = std::make_unique<tessarin_lexicon>();
    transcriber->getTranscriberInfo(&out->info);
    uint32_t length = 0;
    if (const char* const information = transcriber->GetInfoString(&length)) {
        out->information.assign(information, length);
    }
    ByteCursor head(data, size);
    head.Skip(sizeof(uint32_t)); // what the file begins with
    const CGraphemeToPhoneRules<char>& module = transcriber->GetLanguageModule();
    const TranscriberInfo& info = out->info;
    out->facts = {head.ReadI16(),
                  module.section_version,
                  info.language,
                  info.code_page,
                  info.flags,
                  static_cast<uint32_t>(dict->GetEntries().size()),
                  CountWords(dict->GetEntries()),
                  CountRules(module),
                  CountLeaves(module.decision_tree.get()),
                  (module.flags & kWorksByTree) != 0 ? 1 : 0,
                  info.name,
                  info.locale,
                  info.comment,
                  out->information.c_str()};
    return kNoError;
}

} // namespace tessarin
