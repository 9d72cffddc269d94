#include "session/script_parts.h"

namespace tessarin {

namespace {

tessarin_script_part PartOf(int32_t kind, script_place place) {
    return {kind, static_cast<int32_t>(place.offset), static_cast<int32_t>(place.length), 0, -1, -1,
            ""};
}

tessarin_script_part PartOf(const script_word& word) {
    tessarin_script_part part = PartOf(TESSARIN_WORD, word.place);
    part.flags = word.flags;
    part.spoken = word.spoken.c_str();
    return part;
}

} // namespace

int32_t SpanKindOf(const script_event& event) {
    switch (event.kind) {
    case script_event_kind::kSpeaker:
        return TESSARIN_SPEAKER;
    case script_event_kind::kDirection:
        return TESSARIN_DIRECTION;
    case script_event_kind::kAction:
        return TESSARIN_ACTION;
    case script_event_kind::kHeading:
        return TESSARIN_HEADING;
    default:
        return TESSARIN_TAG;
    }
}

error_code MakeScript(tessarin_language* language, const char* text,
                      const tessarin_script_options* options,
                      std::unique_ptr<tessarin_script>& out) {
    text_reading how;
    error_code code = ReadScriptOptions(options, how);
    if (code != kNoError || how.isLiteral) {
        return code != kNoError ? code : error_code{kInvalidArgument};
    }
    code = CheckText(text);
    if (code != kNoError) {
        return code;
    }
    std::unique_ptr<BorrowedTranscriber> borrowed;
    if (language != nullptr) {
        if (!CanReadScripts(language->info, how)) {
            return kNotAvailable;
        }
        borrowed = std::make_unique<BorrowedTranscriber>(*language);
        if (borrowed->GetCode() != kNoError) {
            return borrowed->GetCode();
        }
    }
    auto script = std::make_unique<tessarin_script>(
        ReadScriptFor(borrowed ? borrowed->Get() : nullptr, text, how));
    for (const script_word& word : script->reading.GetWords()) {
        script->words.push_back(PartOf(word));
        auto& readings = script->readings.emplace_back();
        for (const std::string& other : word.others) {
            readings.push_back(other.c_str());
        }
    }
    for (const script_event& event : script->reading.GetEvents()) {
        script->events.push_back(PartOf(SpanKindOf(event), event.place));
    }
    for (const script_cue& cue : script->reading.GetCues()) {
        script->cues.push_back(PartOf(0, cue.place));
        script->cues.back().start_ms = cue.startMs;
        script->cues.back().end_ms = cue.endMs;
    }
    for (const script_place& place : script->reading.GetUnsaid()) {
        script->unsaid.push_back(PartOf(0, place));
    }
    out = std::move(script);
    return kNoError;
}

error_code FindScriptPart(const tessarin_script& script, int32_t offset, int32_t length,
                          tessarin_script_part& out) {
    const auto size = static_cast<int64_t>(script.reading.GetSpoken().size());
    if (offset < 0 || length < 0 || int64_t{offset} + length > size) {
        return kOutOfRange;
    }
    const ScriptReading::source source =
        script.reading.FindSource(static_cast<size_t>(offset), static_cast<size_t>(length));
    out = source.word != nullptr    ? PartOf(*source.word)
          : source.event != nullptr ? PartOf(SpanKindOf(*source.event), source.place)
                                    : PartOf(TESSARIN_PUNCTUATION, source.place);
    out.text_offset = static_cast<int32_t>(source.place.offset);
    out.text_length = static_cast<int32_t>(source.place.length);
    return kNoError;
}

} // namespace tessarin
