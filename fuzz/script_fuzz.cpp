#include "text/script/script_reader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "text/script/built_in_script.h"

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

/// A line of the built-in table, and what may stand in its place.
using line_variants = std::vector<std::string>;

/// Lines without fields, with odd ones and with one more, as far as they read.
std::vector<line_variants> MakeVariants() {
    std::string_view text = kBuiltInScripts.english;
    std::string section;
    std::vector<line_variants> lines;
    while (!text.empty()) {
        const std::string line(text.substr(0, text.find('\n')));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.starts_with('[')) {
            section = line + "\n";
            continue;
        }
        const std::string key = line.substr(0, line.find('\t'));
        line_variants& variants = lines.emplace_back(line_variants{"", section + line + "\n"});
        for (const char* const rest :
             {"", "\t ", "\ta b", "\t\"<>'", "\t\xC3\xA9", "\t12\t\tx", "\ta\tb\tstop\tc\td"}) {
            const std::string variant = section + key + rest + "\n";
            if (ScriptTable().Add(variant).line == 0) {
                variants.push_back(variant);
            }
        }
    }
    return lines;
}

/// The built-in table as the bytes change it. Its keys are those that the reader looks for.
ScriptTable MakeTable(const uint8_t* data, size_t size) {
    static const std::vector<line_variants> lines = MakeVariants();
    std::string text;
    for (size_t i = 0; i < lines.size(); ++i) {
        const uint8_t choice = size > 0 ? data[i % size] : 1;
        text += lines[i][choice / 2 % lines[i].size() * (choice % 2)];
    }
    ScriptTable table;
    Require(table.Add(text).line == 0);
    return table;
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
    const ScriptTable odd = MakeTable(data, std::min<size_t>(size, 40));
    CheckPlaces(ReadScript(text, odd, options, isKnown), text.size());
    return 0;
}
