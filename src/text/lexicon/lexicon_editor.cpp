#include "text/lexicon/lexicon_editor.h"

#include "base/guarded.h"
#include "tessarin/progress_sink.h"
#include "text/lexicon/cm_dict.h"
#include "text/lexicon/lexicon_file.h"
#include "text/lexicon/word_order.h"
#include "text/transcriber.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <utility>

namespace tessarin {
namespace {

/// Save has nothing to save. The code has no text of its own.
constexpr error_code kNothingLoaded = 14;

std::string_view TextOf(const char* text) {
    return text != nullptr ? text : "";
}

std::string_view TextOf(const char* text, int32_t length) {
    return text != nullptr && length > 0 ? std::string_view(text, static_cast<size_t>(length))
                                         : std::string_view();
}

/// Tells when the percentage of some work has changed.
class percentage {
public:
    explicit percentage(size_t numSteps) : total(numSteps) {}

    /// Counts a step. Whether there is a new value to report.
    bool Advance() {
        ++done;
        const auto now = static_cast<int32_t>(done * 100 / total);
        return std::exchange(value, now) != now;
    }
    int32_t Value() const { return value; }

private:
    uint64_t total;
    uint64_t done = 0;
    int32_t value = -1;
};

/// The first way to say the first word of the tokens, or null.
const char* FirstPronunciation(CTranscriber& transcriber) {
    uint32_t count = 0;
    const CTxMarker* markers = transcriber.GetOutputMarkers(&count);
    const CTxMarker* end = markers + count;
    const CTxMarker* word = std::find_if(
        markers, end, [](const CTxMarker& marker) { return marker.kind == kWordToken; });
    if (word == end || word->group_count < 1 || word->groups[0].alternative_count < 1) {
        return nullptr;
    }
    return word->groups[0].alternatives[0];
}

/// Gives the transcriber its lexicon back, however a scope is left.
class lexicon_scope {
public:
    lexicon_scope(CTranscriber& transcriberWithout, ISpeakDict& lexicon)
        : transcriber(transcriberWithout), dict(lexicon) {
        transcriber.SetSpeakDict(nullptr, true);
    }
    lexicon_scope(const lexicon_scope&) = delete;
    lexicon_scope& operator=(const lexicon_scope&) = delete;
    ~lexicon_scope() { transcriber.SetSpeakDict(&dict, false); }

private:
    CTranscriber& transcriber;
    ISpeakDict& dict;
};

} // namespace

const char* record_text::ZeroTerminated() {
    if (own == nullptr && Guarded([&] { Copy(text); }) != kNoError) {
        return "";
    }
    return own.get();
}

void record_text::Copy(std::string_view newText) {
    auto copy = std::make_unique_for_overwrite<char[]>(newText.size() + 1);
    newText.copy(copy.get(), newText.size());
    copy[newText.size()] = '\0';
    text = {copy.get(), newText.size()};
    own = std::move(copy);
}

int32_t CPronRecord::SetPronunciationText(const char* text) {
    return Guarded([&] { pronunciation.Copy(TextOf(text)); });
}

void CPronRecord::CopyTexts() {
    word.Copy(word.View());
    pronunciation.Copy(pronunciation.View());
}

CLexiconEditor::CLexiconEditor() = default;

/// A host may still hold the transcriber, so it forgets the records first.
CLexiconEditor::~CLexiconEditor() {
    if (transcriber) {
        transcriber->SetSpeakDict(nullptr, false);
    }
}

int32_t CLexiconEditor::Load(const void* data, uint32_t size) {
    CCmDict* dict = nullptr;
    const error_code code = LoadTranscriberAndDict(data, size, transcriber, dict);
    if (code != kNoError) {
        return code;
    }
    return Guarded([&] {
        records.reserve(dict->GetEntries().size());
        for (const CPronunciationRec& entry : dict->GetEntries()) {
            records.push_back(std::make_unique<CPronRecord>(
                WordOf(entry), std::string_view(entry.pronunciation, entry.pronunciation_length)));
        }
        const auto isBelow = [](const auto& first, const auto& second) {
            return IsWordBelow(first->Word(), second->Word());
        };
        if (!std::ranges::is_sorted(records, isBelow)) { // a file that an editor saved is
            std::ranges::stable_sort(records, isBelow);
        }
        block = dict->TakeBlock();
        transcriber->SetSpeakDict(this, false);
    });
}

CLexiconEditor::record_list::iterator CLexiconEditor::FirstNotBelow(std::string_view word) {
    return std::lower_bound(records.begin(), records.end(), word,
                            [](const auto& record, std::string_view wanted) {
                                return IsWordBelow(record->Word(), wanted);
                            });
}

CPronRecord* CLexiconEditor::Find(std::string_view word, int32_t index) {
    const auto first = FirstNotBelow(word);
    if (index < 0 || index >= records.end() - first) {
        return nullptr;
    }
    CPronRecord* record = first[index].get();
    return IsSameWord(record->Word(), word) ? record : nullptr;
}

IPronunciationRecord* CLexiconEditor::FindRecord(const char* word, int32_t length, int32_t index) {
    return Find(TextOf(word, length), index);
}

// Kept: a record without a pronunciation matches any, since a host removes a word by leaving its
// pronunciation out.
int32_t CLexiconEditor::RemoveRecord(const char* word, const char* pronunciation) {
    const std::string_view wanted = TextOf(pronunciation);
    for (auto place = FirstNotBelow(TextOf(word));
         place != records.end() && IsSameWord((*place)->Word(), TextOf(word)); ++place) {
        const std::string_view found = (*place)->Pronunciation();
        if (wanted.empty() || found.empty() || found == wanted) {
            records.erase(place);
            return kNoError;
        }
    }
    return kOutOfRange;
}

// Kept: a new record goes before those of its word, so that what a user adds is preferred.
int32_t CLexiconEditor::AddRecord(const char* word, const char* pronunciation) {
    return Guarded([&] {
        auto record = std::make_unique<CPronRecord>(TextOf(word), TextOf(pronunciation));
        record->CopyTexts();
        records.insert(FirstNotBelow(TextOf(word)), std::move(record));
    });
}

// Kept: the transcription is the empty text, so that the length is 0 and hosts that ask take the
// pronunciation from the transcriber's markers.
int32_t CLexiconEditor::GetRulePronunciation(const char* word, char* buffer, int32_t size) {
    if (!transcriber) {
        return 0;
    }
    std::string_view phonemes;
    if (Guarded([&] {
            transcriber->Transcribe(word);
            phonemes = transcriber->GetTranscription();
        }) != kNoError) {
        phonemes = "";
    }
    if (phonemes.ends_with('x')) {
        phonemes.remove_suffix(1);
    }
    if (phonemes.starts_with('x')) {
        phonemes.remove_prefix(1);
    }
    const auto length = static_cast<int32_t>(phonemes.size());
    if (buffer != nullptr && size > 0) {
        phonemes.copy(buffer, static_cast<size_t>(size));
        buffer[std::min(length, size - 1)] = '\0';
    }
    return length;
}

IVisemixTranscriber* CLexiconEditor::GetTranscriber() {
    return counted_ptr<CTranscriber>(transcriber).release();
}

int32_t CLexiconEditor::GetRecordCount() {
    return static_cast<int32_t>(records.size());
}

IPronunciationRecord* CLexiconEditor::GetRecordAt(int32_t index) {
    return index >= 0 && index < GetRecordCount() ? records[static_cast<size_t>(index)].get()
                                                  : nullptr;
}

int32_t CLexiconEditor::RemoveRedundantRecords() {
    if (!transcriber) {
        return kNoError;
    }
    return Guarded([&] {
        const lexicon_scope rulesAlone(*transcriber, *this);
        const std::vector<bool> isRedundant = FindRedundant();
        size_t kept = 0;
        for (size_t number = 0; number < records.size(); ++number) {
            if (!isRedundant[number]) {
                std::swap(records[kept++], records[number]);
            }
        }
        records.resize(kept);
    });
}

// Kept: the progress goes to the standard output, a line for each new percentage.
std::vector<bool> CLexiconEditor::FindRedundant() {
    std::vector<bool> isRedundant(records.size());
    percentage percent(records.size());
    for (size_t number = 0; number < records.size(); ++number) {
        isRedundant[number] = IsOnlyOfItsWord(number) && IsRedundant(*records[number]);
        if (percent.Advance()) {
            std::printf("%d%%\n", percent.Value());
        }
    }
    return isRedundant;
}

/// Only a record of a word with several can make itself one of a word with one, and those stay: so
/// the neighbours at the start decide.
bool CLexiconEditor::IsOnlyOfItsWord(size_t number) const {
    const std::string_view word = records[number]->Word();
    const bool isLike = number > 0 && IsSameWord(records[number - 1]->Word(), word);
    const bool hasLike =
        number + 1 < records.size() && IsSameWord(records[number + 1]->Word(), word);
    return !isLike && !hasLike;
}

bool CLexiconEditor::IsRedundant(const CPronRecord& record) {
    transcriber->Transcribe(std::string(record.Word()).c_str());
    const char* phonemes = FirstPronunciation(*transcriber);
    return phonemes != nullptr && record.Pronunciation() == phonemes;
}

int32_t CLexiconEditor::Save(const char* path, ProgressSink* progress) {
    if (!transcriber) {
        return kNothingLoaded;
    }
    return Guarded([&] {
        std::string text;
        if (!WriteText(progress, text)) {
            return kUserCancelled;
        }
        CCmDict dict;
        if (text.size() > static_cast<size_t>(std::numeric_limits<int32_t>::max()) ||
            !dict.LoadText(text.data(), static_cast<int32_t>(text.size()))) {
            return kOutOfMemory;
        }
        TranscriberInfo info = {};
        transcriber->getTranscriberInfo(&info);
        uint32_t length = 0;
        const char* infoString = transcriber->GetInfoString(&length);
        return WriteLexiconFile(info, transcriber->GetLanguageModule(), dict, path,
                                {infoString, length});
    });
}

/// Writes all records as a lexicon text. False when `progress` cancels.
bool CLexiconEditor::WriteText(ProgressSink* progress, std::string& text) const {
    percentage percent(records.size());
    for (const auto& record : records) {
        text.append(record->Word()).append("=").append(record->Pronunciation()).append("\n");
        if (percent.Advance() && progress != nullptr &&
            progress->OnProgress(static_cast<uint32_t>(percent.Value()), 100)) {
            return false;
        }
    }
    return true;
}

bool CLexiconEditor::LookupFirst(const char* word, int32_t length, char* out) {
    const CPronRecord* record = Find(TextOf(word, length), 0);
    const std::string_view phonemes = record != nullptr ? record->Pronunciation() : "";
    out[phonemes.copy(out, phonemes.size())] = '\0';
    return record != nullptr;
}

bool CLexiconEditor::GetPronunciation(const char* word, uint16_t length, int32_t index,
                                      CPronunciationRec* record) {
    const CPronRecord* found = Find(TextOf(word, length), index);
    if (found == nullptr) {
        return false;
    }
    *record = {found->Word().data(), static_cast<uint16_t>(found->Word().size()),
               found->Pronunciation().data(), static_cast<uint16_t>(found->Pronunciation().size())};
    return true;
}

} // namespace tessarin
