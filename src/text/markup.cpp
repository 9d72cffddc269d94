#include "text/markup.h"

#include "base/flog.h"
#include "text/character_classes.h"
#include "text/tx_marker.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace tessarin {
namespace {

constexpr size_t kNone = std::string_view::npos;

bool IsBlank(char character) {
    return IsSpace(CodeOf(character));
}

size_t SkipBlanks(std::string_view text, size_t place) {
    while (place < text.size() && IsBlank(text[place])) {
        ++place;
    }
    return place;
}

std::string Trimmed(std::string_view text) {
    const auto start = std::find_if_not(text.begin(), text.end(), IsBlank);
    const auto end = std::find_if_not(text.rbegin(), text.rend(), IsBlank).base();
    return start < end ? std::string(start, end) : std::string();
}

/// The number that a text begins with, as the C library reads it; 0 when there is none.
int32_t ParseInteger(const std::string& text) {
    const long long number = std::strtoll(text.c_str(), nullptr, 10);
    return static_cast<int32_t>(std::clamp<long long>(number, std::numeric_limits<int32_t>::min(),
                                                      std::numeric_limits<int32_t>::max()));
}

/// The words of a pronunciation attribute: what stands after the `=`, in quotes or not, without
/// punctuation. Empty when there are none.
std::string SpokenWords(std::string_view tag, size_t from) {
    const auto isWordStart = [](char character) { return IsLetterOrDigit(CodeOf(character)); };
    const auto equals = std::find(tag.begin() + std::min(from, tag.size()), tag.end(), '=');
    const auto start = std::find_if(equals, tag.end(), isWordStart);
    std::string words;
    const auto close = std::find(start, tag.end(), '>');
    for (const char character :
         tag.substr(static_cast<size_t>(start - tag.begin()), static_cast<size_t>(close - start))) {
        const bool isRepeatedBlank = IsBlank(character) && !words.empty() && IsBlank(words.back());
        if (!IsPunctuation(CodeOf(character)) && !isRepeatedBlank) {
            words += ToUpper(CodeOf(character));
        }
    }
    return words;
}

} // namespace

bool ParseTagAttributes(std::string_view text, std::string& name,
                        std::map<std::string, std::string>& attributes, size_t& position) {
    attributes.clear();
    const size_t opening = text.find('<', position);
    if (opening == kNone) {
        return false;
    }
    const size_t nameStart = SkipBlanks(text, opening + 1);
    position = nameStart;
    while (position < text.size() && !IsBlank(text[position])) {
        ++position;
    }
    if (position == text.size()) {
        return false;
    }
    name = text.substr(nameStart, position - nameStart);
    while (true) {
        position = SkipBlanks(text, position);
        for (const std::string_view closing : {">", "/>"}) {
            if (text.substr(position).starts_with(closing)) {
                position += closing.size();
                return true;
            }
        }
        const size_t equals = text.find('=', position);
        const size_t quote = equals == kNone ? kNone : text.find('"', equals);
        const size_t endQuote = quote == kNone ? kNone : text.find('"', quote + 1);
        if (endQuote == kNone) {
            return true;
        }
        const std::string attribute = Trimmed(text.substr(position, equals - position));
        if (!attribute.empty()) {
            attributes[attribute] = Trimmed(text.substr(quote + 1, endQuote - quote - 1));
        }
        position = endQuote + 1;
    }
}

void tag_handlers::Handle(CTxMarker& marker) {
    CheckPronunciationXML(marker);
    CheckCutMarkerXML(marker);
    CheckPauseXML(marker);
    CheckSoundXML(marker);
}

/// `<pron x="words">`: the words are what the written word after the tag sounds like. `<aux
/// x="words">`: they are said where the tag stands.
bool tag_handlers::CheckPronunciationXML(CTxMarker& marker) {
    flog scope("CTranscriber::CheckPronunciationXML");
    constexpr std::string_view kReplacePrefix = "<pron";
    constexpr std::string_view kInsertPrefix = "<aux";
    const std::string tag = reader.RawText(marker.text_start, marker.text_end);
    const bool replaces = tag.starts_with(kReplacePrefix);
    if (!replaces && !tag.starts_with(kInsertPrefix)) {
        return false;
    }
    const std::string words =
        SpokenWords(tag, (replaces ? kReplacePrefix : kInsertPrefix).size() + 1);
    if (words.empty()) {
        return false;
    }
    for (auto place = words.begin(); place != words.end();) {
        const auto end = std::find_if(place, words.end(), IsBlank);
        speaker.TranscribeInPieces({&*place, static_cast<size_t>(end - place)});
        place = std::find_if_not(end, words.end(), IsBlank);
    }
    if (replaces) {
        while (IsSpace(reader.Cur())) {
            reader.Advance();
        }
        marker.text_start = reader.Position();
        while (reader.Cur() != 0 && !IsSpace(reader.Cur())) {
            reader.Advance();
        }
        marker.kind = kWordToken;
    }
    return true;
}

/// `<cut 1500>` or `<cut ms="1500">`: the text before and after is aligned to the audio before and
/// after 1500 ms.
// Kept: a place of 0 counts in the short form only; the other form takes 0 for a missing number.
bool tag_handlers::CheckCutMarkerXML(CTxMarker& marker) {
    flog scope("CTranscriber::CheckCutMarkerXML");
    constexpr std::string_view kPrefix = "<cut";
    const std::string tag = reader.RawText(marker.text_start, marker.text_end);
    if (!tag.starts_with(kPrefix)) {
        return false;
    }
    const std::string rest = Trimmed(std::string_view(tag).substr(kPrefix.size()));
    if (!rest.empty() && IsDigit(CodeOf(rest.front()))) {
        marker.value = ParseInteger(rest);
        marker.kind = kCutToken;
        return true;
    }
    std::string name;
    std::map<std::string, std::string> attributes;
    size_t position = 0;
    if (!ParseTagAttributes(tag, name, attributes, position) || name != "cut" ||
        attributes["ms"].empty()) {
        return false;
    }
    marker.value = ParseInteger(attributes["ms"]);
    if (marker.value != 0) {
        marker.kind = kCutToken;
    }
    return true;
}

/// `<pause>`: silence that must be there.
// Kept: tags are known by their first letters alone, so that `<pauses>` is a pause too.
bool tag_handlers::CheckPauseXML(CTxMarker& marker) {
    flog scope("CTranscriber::CheckPauseXML");
    if (!reader.RawText(marker.text_start, marker.text_end).starts_with("<pause")) {
        return false;
    }
    builder.AppendSegment("xx", true);
    marker.flags |= kPauseTokenFlag;
    return true;
}

/// `<laugh>`, `<breath>`, and `<auto-breath-detection>`, from which on every punctuation may be
/// breathed at.
bool tag_handlers::CheckSoundXML(const CTxMarker& marker) {
    flog scope("CTranscriber::CheckSoundXML");
    constexpr int kMaxLaughs = 7;
    const std::string tag = reader.RawText(marker.text_start, marker.text_end);
    if (tag.starts_with("<laugh")) {
        builder.BeginAlternatives();
        std::string laughter;
        for (int count = 0; count < kMaxLaughs; ++count) {
            laughter += "hAHx";
            builder.AddAlternative(laughter);
        }
        builder.CommitAlternatives();
        return true;
    }
    if (tag.starts_with("<breath")) {
        builder.AddBreathAlternatives(false);
        return true;
    }
    if (tag.starts_with("<auto-breath-detection")) {
        automaticBreath = true;
        return true;
    }
    return false;
}

} // namespace tessarin
