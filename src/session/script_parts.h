#pragma once

#include <memory>
#include <vector>

#include "session/spoken_language.h"
#include "tessarin/tessarin_c.h"
#include "text/script/script_reading.h"

/// A script that was read, and its parts for callers of the flat interface.
struct tessarin_script {
    explicit tessarin_script(tessarin::ScriptReading said) : reading(std::move(said)) {}

    tessarin::ScriptReading reading;
    std::vector<tessarin_script_part> words;
    std::vector<std::vector<const char*>> readings; ///< of each word, but the first
    std::vector<tessarin_script_part> events;
    std::vector<tessarin_script_part> cues;
    std::vector<tessarin_script_part> unsaid;
};

namespace tessarin {

/// The kind of span that an event is.
int32_t SpanKindOf(const script_event& event);

error_code MakeScript(tessarin_language* language, const char* text,
                      const tessarin_script_options* options,
                      std::unique_ptr<tessarin_script>& out);

/// What a stretch of the spoken text stands for.
error_code FindScriptPart(const tessarin_script& script, int32_t offset, int32_t length,
                          tessarin_script_part& out);

} // namespace tessarin
