#include "session/script_transcriber.h"

#include <algorithm>
#include <span>
#include <utility>

#include "tessarin/converted_text.h"
#include "text/tx_marker.h"

namespace tessarin {

namespace {

/// So many pronunciations of the part in which readings differ are tried of each.
constexpr size_t kMostSpellings = 4;

/// So many different readings of a text are looked at, which bounds time and memory for a text that
/// is a table of numbers.
constexpr size_t kMostKnown = 20000;

token_groups GroupsOf(const CTxMarker& token) {
    token_groups groups;
    for (const PhonemeGroup& group :
         std::span(token.groups, static_cast<size_t>(token.group_count))) {
        groups.emplace_back(group.alternatives, group.alternatives + group.alternative_count);
    }
    return groups;
}

/// What some groups say in one piece, with the last group's alternatives first.
std::vector<std::string> Spellings(std::span<const PronunciationBuilder::group> groups) {
    std::vector<std::string> spellings{""};
    for (const PronunciationBuilder::group& group : groups) {
        std::vector<std::string> longer;
        for (const std::string& spelling : spellings) {
            for (const std::string& alternative : group) {
                if (longer.size() < kMostSpellings) {
                    longer.push_back(spelling + alternative);
                }
            }
        }
        spellings = std::move(longer);
    }
    return spellings;
}

} // namespace

token_groups JoinReadings(const std::vector<token_groups>& readings) {
    const token_groups& first = readings.front();
    size_t shortest = first.size();
    size_t numBefore = first.size();
    size_t numAfter = first.size();
    for (const token_groups& each : readings) {
        shortest = std::min(shortest, each.size());
        const auto before =
            std::mismatch(first.begin(), first.end(), each.begin(), each.end()).first -
            first.begin();
        const auto after =
            std::mismatch(first.rbegin(), first.rend(), each.rbegin(), each.rend()).first -
            first.rbegin();
        numBefore = std::min(numBefore, static_cast<size_t>(before));
        numAfter = std::min(numAfter, static_cast<size_t>(after));
    }
    if (shortest == 0) {
        return first;
    }
    // Something is left of each reading to choose from.
    numBefore = std::min(numBefore, shortest - 1);
    numAfter = std::min(numAfter, shortest - 1 - numBefore);
    PronunciationBuilder::group choice;
    for (const token_groups& each : readings) {
        const std::span all(each);
        for (std::string& spelling :
             Spellings(all.subspan(numBefore, all.size() - numBefore - numAfter))) {
            if (std::ranges::find(choice, spelling) == choice.end()) {
                choice.push_back(std::move(spelling));
            }
        }
    }
    const auto beforeEnd = first.begin() + static_cast<std::ptrdiff_t>(numBefore);
    token_groups joined(first.begin(), beforeEnd);
    joined.push_back(std::move(choice));
    joined.insert(joined.end(), first.end() - static_cast<std::ptrdiff_t>(numAfter), first.end());
    return joined;
}

bool CanSay(const token_groups& groups, std::string_view phonemes) {
    std::vector<size_t> places{0};
    for (const PronunciationBuilder::group& group : groups) {
        std::vector<size_t> next;
        for (const size_t place : places) {
            for (std::string alternative : group) {
                std::erase(alternative, 'x');
                const size_t after = place + alternative.size();
                if (phonemes.substr(place).starts_with(alternative) &&
                    std::ranges::find(next, after) == next.end()) {
                    next.push_back(after);
                }
            }
        }
        places = std::move(next);
    }
    return std::ranges::find(places, phonemes.size()) != places.end();
}

ScriptTranscriber::ScriptTranscriber(transcriber_owner wrapped,
                                     std::shared_ptr<const SpanText> script)
    : inner(std::move(wrapped)), text(std::move(script)) {
    LearnReadings();
}

ScriptTranscriber::~ScriptTranscriber() {
    ReleaseTokens();
}

/// Has all other readings said in one text.
void ScriptTranscriber::LearnReadings() {
    std::string all;
    std::vector<token_groups*> inOrder;
    for (const script_word& word : text->GetReading()->GetWords()) {
        for (const std::string& other : word.others) {
            if (known.size() < kMostKnown) {
                const auto [entry, isNew] = known.try_emplace(other);
                if (isNew) {
                    all += SaidAsOneWord(other) + "\n";
                    inOrder.push_back(&entry->second);
                }
            }
        }
    }
    if (known.empty()) {
        return;
    }
    TranscriberInfo info{};
    inner->getTranscriberInfo(&info);
    const SpanText local(all, info);
    inner->Transcribe(local.GetLocal().c_str());
    uint32_t count = 0;
    const CTxMarker* const said = inner->GetOutputMarkers(&count);
    if (count != inOrder.size()) { // a table may have words that cannot be said
        known.clear();
        return;
    }
    for (size_t i = 0; i < count; ++i) {
        *inOrder[i] = GroupsOf(said[i]);
    }
}

void ScriptTranscriber::ReleaseTokens() {
    for (const size_t index : changed) {
        ReleaseGroups(tokens[index]);
    }
    changed.clear();
    tokens.clear();
    choices.clear();
}

bool ScriptTranscriber::Transcribe(const char* local) {
    ReleaseTokens();
    const bool isDone = inner->Transcribe(local);
    uint32_t count = 0;
    const CTxMarker* const said = inner->GetOutputMarkers(&count);
    tokens.assign(said, said + count);
    // A text with stretches blanked out has the rest where it was.
    if (local == nullptr || std::string_view(local).size() != text->GetLocal().size()) {
        return isDone;
    }
    changed.reserve(tokens.size());
    for (CTxMarker& token : tokens) {
        const ScriptReading::source source =
            text->FindSource(static_cast<int32_t>(token.text_start),
                             static_cast<int32_t>(token.text_end - token.text_start));
        if (token.kind == kWordToken && source.word != nullptr && token.group_count > 0) {
            AddAlternatives(token, *source.word);
        }
    }
    return isDone;
}

void ScriptTranscriber::AddAlternatives(CTxMarker& token, const script_word& word) {
    const token_groups first = GroupsOf(token);
    token_groups joined;
    if (!word.guesses.empty() && first == token_groups{{word.guesses.front()}}) {
        joined = {word.guesses};
    } else if (!word.others.empty() && !known.empty()) {
        std::vector<reading> readings{{word.spoken, first}};
        std::vector<token_groups> ways{first};
        for (const std::string& other : word.others) {
            const auto entry = known.find(other);
            if (entry != known.end() && !entry->second.empty()) {
                readings.push_back({other, entry->second});
                ways.push_back(entry->second);
            }
        }
        if (ways.size() < 2) {
            return;
        }
        joined = JoinReadings(ways);
        choices[token.text_start] = std::move(readings);
    } else {
        return;
    }
    StoreGroups(token, joined);
    changed.push_back(static_cast<size_t>(&token - tokens.data()));
}

bool ScriptTranscriber::Transcribe(IQuibConvertedText* converted) {
    return Transcribe(converted != nullptr ? converted->GetText() : "");
}

CTxMarker* ScriptTranscriber::GetOutputMarkers(uint32_t* count) {
    if (count != nullptr) {
        *count = static_cast<uint32_t>(tokens.size());
    }
    return tokens.empty() ? nullptr : tokens.data();
}

int32_t ScriptTranscriber::Release() {
    const int32_t left = --references;
    if (left == 0) {
        delete this;
    }
    return left;
}

std::unique_ptr<ScriptTranscriber> MakeScriptTranscriber(IVisemixTranscriber& inner,
                                                         std::shared_ptr<const SpanText> script) {
    inner.AddRef();
    return std::make_unique<ScriptTranscriber>(transcriber_owner(&inner), std::move(script));
}

const char* ScriptTranscriber::FindReading(uint32_t textStart, const char* phonemes) {
    const auto found = choices.find(textStart);
    if (found == choices.end()) {
        return "";
    }
    const auto said = std::ranges::find_if(found->second, [&](const reading& each) {
        return CanSay(each.groups, phonemes != nullptr ? phonemes : "");
    });
    return (said != found->second.end() ? *said : found->second.front()).words.c_str();
}

} // namespace tessarin
