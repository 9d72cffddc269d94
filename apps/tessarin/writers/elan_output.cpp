#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "apps/tessarin/writers/markup.h"
#include "apps/tessarin/writers/output_formats.h"
#include "apps/tessarin/writers/phoneme_symbols.h"

namespace {

struct annotation {
    int32_t startMs;
    int32_t endMs;
    std::string text;
};

struct tier {
    const char* name;
    std::vector<annotation> annotations;
};

std::vector<tier> TiersOf(const timed_result& result, uint32_t alphabet) {
    std::vector<tier> tiers = {{"words", {}}, {"phones", {}}};
    for (const timed_span& word : result.words) {
        tiers[0].annotations.push_back({word.startMs, word.endMs, word.text});
    }
    for (const timed_phoneme& phoneme : result.phonemes) {
        if (phoneme.label != "x") {
            tiers[1].annotations.push_back(
                {phoneme.startMs, phoneme.endMs, SymbolOf(phoneme.label, alphabet)});
        }
    }
    // Annotations of a tier last some time and do not overlap.
    for (tier& each : tiers) {
        int32_t reachedMs = 0;
        for (annotation& next : each.annotations) {
            next.startMs = std::max(next.startMs, reachedMs);
            reachedMs = std::max(next.endMs, reachedMs);
        }
        std::erase_if(each.annotations,
                      [](const annotation& one) { return one.endMs <= one.startMs; });
    }
    return tiers;
}

std::string EscapedUri(const std::string& path) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    static constexpr std::string_view kPlain = "-._~/:";
    std::string uri;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isPlain =
            (byte < 0x80 && std::isalnum(byte) != 0) || kPlain.find(c) != std::string_view::npos;
        uri +=
            isPlain ? std::string(1, c) : std::string{'%', kDigits[byte >> 4], kDigits[byte & 15]};
    }
    return uri;
}

std::string MediaElement(const timed_result& result, const std::string& file) {
    namespace fs = std::filesystem;
    if (result.audio.empty() || result.audio == "-") {
        return "";
    }
    const fs::path audio = fs::absolute(result.audio).lexically_normal();
    const fs::path folder = file == "-" ? fs::current_path() : fs::absolute(file).parent_path();
    std::string ending = audio.extension().string();
    return "        <MEDIA_DESCRIPTOR MEDIA_URL=\"file://" + EscapedUri(audio.generic_string()) +
           "\" MIME_TYPE=\"" + (ending == ".wav" ? "audio/x-wav" : "unknown") +
           "\" RELATIVE_MEDIA_URL=\"./" +
           EscapedUri(audio.lexically_relative(folder.lexically_normal()).generic_string()) +
           "\"/>\n";
}

} // namespace

std::string WriteElan(const timed_result& result, const write_settings& settings) {
    std::string slots;
    std::string body;
    size_t numSlots = 0;
    size_t numAnnotations = 0;
    const auto addSlot = [&](int32_t ms) {
        const std::string id = "ts" + std::to_string(++numSlots);
        slots += "        <TIME_SLOT TIME_SLOT_ID=\"" + id + "\" TIME_VALUE=\"" +
                 std::to_string(ms) + "\"/>\n";
        return id;
    };
    for (const tier& each : TiersOf(result, settings.alphabet)) {
        body += "    <TIER LINGUISTIC_TYPE_REF=\"aligned\" TIER_ID=\"" + std::string(each.name) +
                "\">\n";
        for (const annotation& one : each.annotations) {
            const std::string from = addSlot(one.startMs);
            const std::string to = addSlot(one.endMs);
            body += "        <ANNOTATION>\n            <ALIGNABLE_ANNOTATION ANNOTATION_ID=\"a" +
                    std::to_string(++numAnnotations) + "\" TIME_SLOT_REF1=\"" + from +
                    "\" TIME_SLOT_REF2=\"" + to + "\">\n                <ANNOTATION_VALUE>" +
                    EscapeMarkup(one.text) +
                    "</ANNOTATION_VALUE>\n            </ALIGNABLE_ANNOTATION>\n"
                    "        </ANNOTATION>\n";
        }
        body += "    </TIER>\n";
    }
    // The form wants a date; a fixed one keeps equal results equal.
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<ANNOTATION_DOCUMENT AUTHOR=\"tessarin\" DATE=\"2000-01-01T00:00:00+00:00\" "
           "FORMAT=\"3.0\" VERSION=\"3.0\" "
           "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
           "xsi:noNamespaceSchemaLocation=\"http://www.mpi.nl/tools/elan/EAFv3.0.xsd\">\n"
           "    <HEADER MEDIA_FILE=\"\" TIME_UNITS=\"milliseconds\">\n" +
           MediaElement(result, settings.file) + "    </HEADER>\n    <TIME_ORDER>\n" + slots +
           "    </TIME_ORDER>\n" + body +
           "    <LINGUISTIC_TYPE GRAPHIC_REFERENCES=\"false\" LINGUISTIC_TYPE_ID=\"aligned\" "
           "TIME_ALIGNABLE=\"true\"/>\n</ANNOTATION_DOCUMENT>\n";
}
