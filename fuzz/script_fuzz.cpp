#include "text/script/script_reader.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

using namespace tessarin;

namespace {

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

void CheckPlaces(const ScriptReading& reading, size_t textLength) {
    const auto isInText = [&](script_place place) {
        return size_t{place.offset} + place.length <= textLength;
    };
    uint32_t end = 0;
    for (const script_word& word : reading.GetWords()) {
        Require(isInText(word.place) && word.place.length > 0 && end <= word.place.offset);
        Require(!word.spoken.empty());
        end = word.place.offset + word.place.length;
    }
    for (const script_event& event : reading.GetEvents()) {
        Require(isInText(event.place));
    }
    const size_t size = reading.GetSpoken().size();
    for (size_t at = 0; at < size; at += 1 + size / 64) {
        Require(isInText(reading.FindSource(at, size / 8).place));
    }
}

} // namespace

// The first byte chooses the form and the role; the rest is a script of any bytes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    script_options options;
    options.format = static_cast<script_format>(data[0] % 6);
    options.hasCueTimes = (data[0] & 0x40) != 0;
    options.speaker = (data[0] & 0x80) != 0 ? "BOB" : "";
    const word_lookup isKnown = [](std::string_view word) { return word.size() % 2 == 0; };
    CheckPlaces(ReadScript(text, BuiltInEnglishScript(), options, isKnown), text.size());
    ScriptTable table;
    static_cast<void>(table.Add(text));
    CheckPlaces(ReadScript(text, table, options, {}), text.size());
    return 0;
}
