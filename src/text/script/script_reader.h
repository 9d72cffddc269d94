#pragma once

#include <string>
#include <string_view>

#include "text/script/inline_reader.h"
#include "text/script/script_layout.h"
#include "text/script/script_reading.h"

namespace tessarin {

/// How a script is read.
struct script_options {
    script_format format = script_format::kAuto;
    std::string speaker;      ///< whose lines are taken, in any case; empty: everybody's
    bool hasCueTimes = false; ///< the times of subtitles divide the text
};

/// Turns a text as people write it into the words to be said, each with its place in the text: the
/// step before a transcriber. `text` may be any bytes; those that are not UTF-8 are blanks.
ScriptReading ReadScript(std::string_view text, const ScriptTable& table,
                         const script_options& options, const word_lookup& isKnown);

} // namespace tessarin
