#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "text/script/script_reading.h"

namespace tessarin {

class ScriptTable;

enum class script_format : uint8_t {
    kAuto, ///< found out by its marks
    kPlain,
    kFountain,
    kSubRip,
    kWebVtt,
    kTextGrid
};

/// A stretch of a text that is said by one speaker, or that is an event. What stands in none, such
/// as the times of subtitles, is neither.
struct script_region {
    uint32_t start;
    uint32_t end;
    bool isSpoken;
    script_event_kind event; ///< where it is not spoken
    uint32_t speaker;        ///< number of the name; 0 without one
    int32_t startMs = -1;    ///< of subtitles
    int32_t endMs = -1;
    bool hasReferences = false; ///< a character may be written as a reference, such as &amp;
};

struct script_layout {
    std::vector<script_region> regions; ///< in the order of the text
    std::vector<std::string> speakers{""};
    std::map<std::string, uint32_t> numbers; ///< of the speakers
};

/// Finds who says which lines of a text of any bytes. A speaker's name stands before a colon, or
/// alone in capitals above the line; headings, transitions and stage directions are lines of their
/// own.
script_layout LayOutScript(std::string_view text, script_format format, const ScriptTable& table);

/// The form that a text is in, which is plain when it has the marks of no other.
script_format FindScriptFormat(std::string_view text, const ScriptTable& table);

// The parts of the layout.

/// Adds the lines from `start` up to `end`.
void LayOutPlain(std::string_view text, size_t start, size_t end, const ScriptTable& table,
                 script_layout& out);
void LayOutFountain(std::string_view text, const ScriptTable& table, script_layout& out);
/// SubRip and WebVTT.
void LayOutSubtitles(std::string_view text, const ScriptTable& table, script_layout& out);
void LayOutTextGrid(std::string_view text, const ScriptTable& table, script_layout& out);

/// A line without its line break and the blanks around it.
struct script_line {
    size_t start;
    size_t end;
    size_t next; ///< where the line after it begins

    bool IsEmpty() const { return start == end; }
    std::string_view In(std::string_view text) const { return text.substr(start, end - start); }
};
script_line ReadScriptLine(std::string_view text, size_t at, size_t limit);

/// Whether the line is the heading of a scene, or a transition.
bool IsSceneHeading(std::string_view line, const ScriptTable& table);
bool IsTransition(std::string_view line, const ScriptTable& table);
/// How long the name at the beginning of a line is that is nothing but a name in capitals, such as
/// SARAH (CONT'D); 0 when it is not one.
size_t CueNameLength(std::string_view line, const ScriptTable& table);

/// The name in the form in which names are compared, of which a name that is too long to be one
/// keeps the beginning.
std::string SpeakerName(std::string_view name);
uint32_t FindOrAddSpeaker(std::string_view name, script_layout& out);

} // namespace tessarin
