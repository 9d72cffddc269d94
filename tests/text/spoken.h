#pragma once

#include "text/default_transcriber.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tessarin {

inline counted_ptr<CTranscriber> EnglishTranscriber(std::string_view lexicon = "") {
    return MakeDefaultTranscriber(lexicon.data(), static_cast<int32_t>(lexicon.size()));
}

/// The groups of a token: blanks between groups, `|` between alternatives.
inline std::string Pronunciation(const CTxMarker& marker) {
    std::string text;
    for (int32_t group = 0; group < marker.group_count; ++group) {
        text += group == 0 ? "" : " ";
        for (int32_t index = 0; index < marker.groups[group].alternative_count; ++index) {
            text += index == 0 ? "" : "|";
            text += marker.groups[group].alternatives[index];
        }
    }
    return text;
}

inline std::vector<CTxMarker> TokensOf(CTranscriber& transcriber, const char* text) {
    transcriber.Transcribe(text);
    uint32_t count = 0;
    const CTxMarker* markers = transcriber.GetOutputMarkers(&count);
    return {markers, markers + count};
}

/// One line a token: its kind, its span and its pronunciation, such as "1 0-5 hEHlOW".
inline std::vector<std::string> Tokens(std::string_view text, std::string_view lexicon = "") {
    const auto transcriber = EnglishTranscriber(lexicon);
    std::vector<std::string> lines;
    for (const CTxMarker& marker : TokensOf(*transcriber, std::string(text).c_str())) {
        std::string line = std::to_string(marker.kind) + " " + std::to_string(marker.text_start) +
                           "-" + std::to_string(marker.text_end);
        if (marker.group_count > 0) {
            line += " " + Pronunciation(marker);
        }
        lines.push_back(line);
    }
    return lines;
}

/// The pronunciations of all tokens, with " / " between tokens.
inline std::string Said(std::string_view text, std::string_view lexicon = "") {
    const auto transcriber = EnglishTranscriber(lexicon);
    std::string said;
    bool isFirst = true;
    for (const CTxMarker& marker : TokensOf(*transcriber, std::string(text).c_str())) {
        said += (isFirst ? "" : " / ") + Pronunciation(marker);
        isFirst = false;
    }
    return said;
}

} // namespace tessarin
