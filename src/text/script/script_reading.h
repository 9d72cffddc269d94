#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "text/script/script_tokens.h"

namespace tessarin {

/// What of a script is not said, or how it is said.
enum class script_event_kind : uint8_t {
    kSpeaker = 1, ///< whose line follows
    kDirection,   ///< in parentheses, or a line of its own
    kAction,      ///< between stars
    kNote,        ///< in brackets
    kHeading      ///< of a scene or a chapter, or a transition
};

struct script_event {
    script_event_kind kind;
    script_place place; ///< with its brackets
};

// Flags of a word.
inline constexpr uint32_t kEmphasisedWord = 1; ///< in capitals, or between stars
inline constexpr uint32_t kDrawnOutWord = 2;   ///< letters are repeated

/// One word of the author's, and the words that are said for it.
struct script_word {
    std::string spoken; ///< separated by blanks
    script_place place;
    uint32_t flags;
    std::vector<std::string> others = {};  ///< what a reader may say instead
    std::vector<std::string> guesses = {}; ///< phonemes, the likeliest first, of an unknown word
};

/// So many ways to say a word are kept.
inline constexpr size_t kMostReadings = 6;

/// Where a line of subtitles stands, and when it was shown.
struct script_cue {
    script_place place;
    int32_t startMs;
    int32_t endMs;
};

/// What is said of a text, and for each part of it the place in the text.
class ScriptReading {
public:
    /// The words with the author's punctuation and tags, in UTF-8, as a transcriber takes them.
    const std::string& GetSpoken() const { return spoken; }
    const std::vector<script_word>& GetWords() const { return words; }
    const std::vector<script_event>& GetEvents() const { return events; }
    const std::vector<script_cue>& GetCues() const { return cues; }
    /// The first place of each character that has no name, and how many they are.
    const std::vector<script_place>& GetUnsaid() const { return unsaid; }

    /// What a stretch of the spoken text stands for.
    struct source {
        script_place place;
        const script_word* word;   ///< null for anything else
        const script_event* event; ///< null for anything else
    };
    source FindSource(size_t offset, size_t length) const;

    void AddWord(script_word word);
    /// Text that is passed on as it stands: punctuation, or a tag.
    void AddText(std::string_view text, script_place place);
    /// With a mark in the spoken text, so that the event has a time, too.
    void AddEvent(script_event event);
    /// Nothing of one region is read together with the next.
    void EndRegion();
    void AddCue(script_cue cue) { cues.push_back(cue); }
    void AddUnsaid(script_place place) { unsaid.push_back(place); }
    std::vector<script_word>& GetMutableWords() { return words; }

private:
    static constexpr uint32_t kNone = UINT32_MAX;
    struct part {
        uint32_t start; ///< in the spoken text
        uint32_t end;
        script_place place;
        uint32_t word;  ///< its number
        uint32_t event; ///< its number
    };
    void AddPart(std::string_view text, part made);

    std::string spoken;
    std::vector<part> parts;
    std::vector<script_word> words;
    std::vector<script_event> events;
    std::vector<script_cue> cues;
    std::vector<script_place> unsaid;
};

/// The text for which a transcriber says `words` as one word. It ends with that word, of one
/// character.
std::string SaidAsOneWord(std::string_view words);

} // namespace tessarin
