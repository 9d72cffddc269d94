#include "text/transcriber.h"

#include "base/flog.h"
#include "base/text_copy.h"
#include "tessarin/converted_text.h"
#include "text/character_classes.h"
#include "text/markup.h"
#include "text/number_converters.h"
#include "text/timed_markers.h"
#include "text/tx_marker.h"
#include "text/word_converters.h"
#include "text/word_speaker.h"

#include <clocale>
#include <new>
#include <span>
#include <utility>

namespace tessarin {
namespace {

constexpr int32_t kMarkerGrowthStep = 256;

/// Switches the process to another locale for the length of a scope. A name that the system does
/// not know changes nothing.
class locale_scope {
public:
    explicit locale_scope(const std::string& name) {
        if (!name.empty()) {
            const char* current = std::setlocale(LC_ALL, nullptr);
            previous = current != nullptr ? current : "";
            std::setlocale(LC_ALL, name.c_str());
        }
    }
    locale_scope(const locale_scope&) = delete;
    locale_scope& operator=(const locale_scope&) = delete;
    ~locale_scope() {
        if (!previous.empty()) {
            std::setlocale(LC_ALL, previous.c_str());
        }
    }

private:
    std::string previous;
};

} // namespace

/// The converters of one run through a text.
struct token_converters {
    word_converters words;
    number_converters numbers;
    tag_handlers tags;
};

CTranscriber::CTranscriber(speak_dict_ptr lexicon,
                           std::unique_ptr<CGraphemeToPhoneRules<char>> language)
    : ownDict(std::move(lexicon)), dict(ownDict.get()), markers(kMarkerGrowthStep),
      module(language != nullptr ? std::move(language)
                                 : std::make_unique<CGraphemeToPhoneRules<char>>()) {}

CTranscriber::~CTranscriber() {
    ownDict.reset();
    module.reset();
    transcription.reset();
    ReleaseMarkers();
}

bool CTranscriber::Transcribe(const char* text) {
    flog scope("CTranscriber::Transcribe");
    automaticBreath = false;
    const locale_scope locale(std::string(FieldText(info.locale)));
    SetInput(text != nullptr ? text : "");
    ReleaseMarkers();
    Translate();
    return true;
}

bool CTranscriber::Transcribe(IQuibConvertedText* converted) {
    flog scope("CTranscriber::Transcribe");
    return Transcribe(converted != nullptr ? converted->GetText() : "");
}

void CTranscriber::getTranscriberInfo(TranscriberInfo* out) {
    flog scope("CTranscriber::getTranscriberInfo");
    if (out != nullptr) {
        *out = info;
    }
}

CTxMarker* CTranscriber::GetOutputMarkers(uint32_t* count) {
    flog scope("CTranscriber::GetOutputMarkers");
    if (count != nullptr) {
        *count = static_cast<uint32_t>(markers.GetSize());
    }
    return markers.GetAt(0);
}

// Kept: the text is empty whatever was read. Hosts read the markers, and the lexicon editor copies
// this text and expects nothing in it.
const char* CTranscriber::GetTranscription() {
    flog scope("CTranscriber::GetTranscription");
    transcription = std::make_unique<char[]>(1);
    return transcription.get();
}

void CTranscriber::GenerateTimedMarkers(ISyncResultsCollection* results) {
    flog scope("CTranscriber::GenerateTimedMarkers");
    if (results != nullptr) {
        AddTimedMarkers({markers.begin(), static_cast<size_t>(markers.GetSize())}, *results);
    }
}

const char* CTranscriber::GetInfoString(uint32_t* length) {
    flog scope("CTranscriber::GetInfoString");
    if (length != nullptr) {
        *length = static_cast<uint32_t>(infoString.size());
    }
    return infoString.empty() ? nullptr : infoString.data();
}

int32_t CTranscriber::AddRef() {
    flog scope("CTranscriber::AddRef");
    return ++references;
}

int32_t CTranscriber::Release() {
    flog scope("CTranscriber::Release");
    const int32_t left = --references;
    if (left == 0) {
        delete this;
    }
    return left;
}

uint32_t CTranscriber::GetInputChar(int32_t index) {
    flog scope("CTranscriber::GetInputChar");
    return reader.RawAt(index);
}

void CTranscriber::SetSpeakDict(ISpeakDict* newDict, bool owned) {
    flog scope("CTranscriber::SetSpeakDict");
    if (ownDict.get() == newDict) {
        static_cast<void>(ownDict.release()); // it stays, whoever owns it from now on
    }
    ownDict.reset(owned ? newDict : nullptr);
    dict = newDict;
}

bool CTranscriber::Knows(std::string_view word) const {
    const std::string_view letters = module->SubstituteLetters(word);
    CPronunciationRec found;
    return dict != nullptr && letters.size() <= UINT16_MAX &&
           dict->GetPronunciation(letters.data(), static_cast<uint16_t>(letters.size()), 0, &found);
}

void CTranscriber::setTranscriberInfo(const TranscriberInfo* newInfo) {
    flog scope("CTranscriber::setTranscriberInfo");
    info = *newInfo;
}

void CTranscriber::SetInput(const char* text) {
    flog scope("CTranscriber::SetInput");
    reader.SetInput(text);
}

void CTranscriber::ReleaseMarkers() {
    for (CTxMarker& marker : markers) {
        ReleaseGroups(marker);
    }
    markers.RemoveAll();
}

void CTranscriber::Translate() {
    flog scope("CTranscriber::Translate");
    reader.Start(module->fold_table);
    word_speaker speaker(*module, dict, builder);
    token_converters converters = {
        word_converters(reader, speaker, *module),
        number_converters(reader, speaker, *module, (info.flags & kUnitsBeforeTens) != 0),
        tag_handlers(reader, speaker, builder, automaticBreath),
    };
    while (reader.Cur() != 0) {
        CTxMarker marker = EmptyTxMarker(reader.Position());
        builder.Clear();
        ReadToken(marker, converters);
        if (marker.kind != kBlankToken) {
            AppendMarker(marker);
        }
    }
}

void CTranscriber::ReadToken(CTxMarker& marker, token_converters& converters) {
    const uint32_t cur = reader.Cur();
    const uint32_t next = reader.Next();
    if (cur == '{') {
        marker.kind = kTagToken;
        SkipBehind('}');
    } else if (cur == '[') {
        marker.kind = kTagToken;
        SkipBehind(']');
    } else if (cur == '<' && (IsLetter(next) || next == '?' || next == '/')) {
        ConvertTag(marker, converters);
    } else if (IsDigit(cur)) {
        converters.numbers.convert_number();
    } else if (IsLetter(cur) || cur == '\'' || cur == '"') {
        converters.words.convert_word();
    } else if (cur == '$' && IsDigit(next)) {
        converters.numbers.convert_money();
    } else if (IsPunctuation(cur)) {
        ConvertPunctuation(marker);
    } else if (IsSpace(cur)) {
        marker.kind = kBlankToken;
        reader.Advance();
    } else {
        converters.words.convert_ascii();
    }
}

// Kept: without its closing character a bracket reaches one past the end of the text, since the
// step over that character is always taken.
void CTranscriber::SkipBehind(char closing) {
    while (reader.Cur() != CodeOf(closing) && reader.Cur() != 0) {
        reader.Advance();
    }
    reader.Advance();
}

void CTranscriber::ConvertTag(CTxMarker& marker, token_converters& converters) {
    marker.kind = kTagToken;
    SkipBehind('>');
    marker.text_end = reader.Position();
    converters.tags.Handle(marker);
}

void CTranscriber::ConvertPunctuation(CTxMarker& marker) {
    marker.kind = kPunctuationToken;
    builder.AppendSegment("x", false);
    marker.flags |= kPauseTokenFlag;
    if (automaticBreath) {
        builder.AddBreathAlternatives(true);
    }
    reader.Advance();
}

void CTranscriber::AppendMarker(CTxMarker& marker) {
    marker.text_end = reader.Position();
    StoreGroups(marker, builder.GetGroups());
    ReserveAhead(markers);
    if (markers.Add(marker) == 0) {
        ReleaseGroups(marker);
        throw std::bad_alloc();
    }
}

} // namespace tessarin
