#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "apps/tessarin/writers/markup.h"
#include "apps/tessarin/writers/output_formats.h"

namespace {

std::string Clock(int32_t ms) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.3fs", static_cast<double>(ms) / 1000.0);
    return text;
}

/// The page of the words that belongs to the times in `file`.
std::string PageOf(const std::string& file) {
    const std::string stem = std::filesystem::path(file).stem().string();
    return (stem.empty() || file == "-" ? "speech" : stem) + ".xhtml";
}

/// The recording as seen from the folder of `file`.
std::string AudioFrom(const std::string& audio, const std::string& file) {
    namespace fs = std::filesystem;
    if (audio.empty() || audio == "-") {
        return audio;
    }
    const fs::path folder = file == "-" ? fs::current_path() : fs::absolute(file).parent_path();
    const fs::path place = fs::absolute(audio).lexically_normal();
    const fs::path relative = place.lexically_relative(folder.lexically_normal());
    return (relative.empty() ? place : relative).generic_string();
}

} // namespace

std::string WriteWordPage(const timed_result& result, const write_settings& /*settings*/) {
    std::string page = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                       "<html xmlns=\"http://www.w3.org/1999/xhtml\">\n"
                       "<head><title>Words</title></head>\n<body>\n<p>";
    size_t event = 0;
    const auto addMarksBefore = [&](int64_t place) {
        for (; event < result.events.size() && result.events[event].textOffset < place; ++event) {
            if (result.events[event].type == tessarin::kPunctuationMarker) {
                page += EscapeMarkup(result.events[event].text);
            }
        }
    };
    for (size_t i = 0; i < result.words.size(); ++i) {
        addMarksBefore(result.words[i].textOffset);
        page += (i > 0 ? "\n<span id=\"w" : "<span id=\"w") + std::to_string(i + 1) + "\">" +
                EscapeMarkup(result.words[i].text) + "</span>";
    }
    addMarksBefore(INT64_MAX);
    return page + "</p>\n</body>\n</html>\n";
}

std::string WriteSmil(const timed_result& result, const write_settings& settings) {
    const std::string page = EscapeAttribute(PageOf(settings.file));
    const std::string audio = EscapeAttribute(AudioFrom(result.audio, settings.file));
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                       "<smil xmlns=\"http://www.w3.org/ns/SMIL\" version=\"3.0\">\n<body>\n"
                       "<seq id=\"words\">\n";
    for (size_t i = 0; i < result.words.size(); ++i) {
        const timed_span& word = result.words[i];
        const std::string number = std::to_string(i + 1);
        text += "<par id=\"p" + number + "\"><text src=\"" + page + "#w" + number +
                "\"/><audio src=\"" + audio + "\" clipBegin=\"" + Clock(word.startMs) +
                "\" clipEnd=\"" + Clock(word.endMs) + "\"/></par>\n";
    }
    return text + "</seq>\n</body>\n</smil>\n";
}
