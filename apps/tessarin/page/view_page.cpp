#include "apps/tessarin/page/view_page.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <map>
#include <string_view>

#include <nlohmann/json.hpp>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/options/mouth_shapes.h"
#include "apps/tessarin/writers/base64.h"
#include "apps/tessarin/writers/markup.h"
#include "apps/tessarin/writers/output_formats.h"

namespace {

using nlohmann::json;

/// A browser reads texts of a few megabytes without pain; a multiple of 3, so that pieces of base64
/// end with whole bytes.
constexpr size_t kAudioPiece = 3 << 20;

/// JSON without any `<`, which would begin the end of the script that carries it. In JSON it stands
/// in strings only, where its escape means the same.
std::string EscapeJson(const std::string& text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (const char c : text) {
        if (c == '<') {
            escaped += "\\u003c";
        } else {
            escaped += c;
        }
    }
    return escaped;
}

std::string AudioElements(const page_audio& audio) {
    const std::string wav = MakeWav(audio);
    std::string elements;
    for (size_t i = 0; i < wav.size(); i += kAudioPiece) {
        elements += "<script type=\"text/plain\" class=\"audio\">" +
                    Base64(std::string_view(wav).substr(i, kAudioPiece)) + "</script>\n";
    }
    return elements;
}

/// The shapes of a set, and what each of `phonemes` shows of them.
json DescribeShapes(const MouthShapes& shapes, const std::vector<std::string>& phonemes) {
    const std::vector<std::string> names = shapes.GetNames();
    json shown = json::object();
    for (const std::string& label : phonemes) {
        const std::vector<double> row = shapes.Mix({{0, 1, {{label, 1.0f}}}}).front();
        json parts = json::object();
        for (size_t i = 0; i < row.size(); ++i) {
            if (row[i] > 0.0) {
                parts[names[i]] = row[i];
            }
        }
        shown[label] = std::move(parts);
    }
    return {{"set", shapes.GetSet()},
            {"shapes", names},
            {"closed", shapes.GetClosedNames()},
            {"rest", shapes.GetRestName()},
            {"phonemes", std::move(shown)}};
}

std::string ShapeSets() {
    std::vector<std::string> phonemes;
    const json mouth = json::parse(kViewSources.shapes);
    for (const auto& [label, parts] : mouth.at("phonemes").items()) {
        phonemes.push_back(label);
    }
    json sets = json::array();
    for (const char* set : {"visemes", "arkit", "switches"}) {
        sets.push_back(DescribeShapes(MouthShapes::BuiltIn(set), phonemes));
    }
    return sets.dump();
}

/// The script of the page, with the data that it shares with the tool.
std::string Script() {
    return std::string("const MOUTH = ") + kViewSources.shapes +
           ";\nconst SHAPE_SETS = " + ShapeSets() + ";\n" + kViewSources.script;
}

/// `page` with its places filled. What is filled in is not looked at for places again.
std::string FillIn(std::string_view page, const std::map<std::string_view, std::string>& parts) {
    std::string filled;
    for (;;) {
        const size_t open = page.find("{{");
        const size_t close = open == page.npos ? page.npos : page.find("}}", open);
        if (close == page.npos) {
            return filled.append(page);
        }
        filled.append(page.substr(0, open));
        filled += parts.at(page.substr(open + 2, close - open - 2));
        page.remove_prefix(close + 2);
    }
}

bool HasTimes(const json& entry) {
    return entry.at("start_ms").is_number() && entry.at("end_ms").is_number();
}

bool IsPhoneme(const json& entry) {
    return HasTimes(entry) && entry.at("label").is_string() && entry.at("score").is_number();
}

bool IsOfText(const json& entry) {
    return entry.at("text").is_string() && entry.at("text_offset").is_number() &&
           entry.at("text_length").is_number();
}

bool IsSpan(const json& entry) {
    return HasTimes(entry) && IsOfText(entry);
}

/// One that was not heard has no times.
bool IsWord(const json& entry) {
    return entry.value("said", json(true)) == json(false) ? IsOfText(entry) : IsSpan(entry);
}

bool IsFrame(const json& entry) {
    const json& weights = entry.at("weights");
    return HasTimes(entry) && weights.is_object() &&
           std::ranges::all_of(weights, [](const json& weight) { return weight.is_number(); });
}

bool IsCurve(const json& entry) {
    const json& keys = entry.at("keys");
    return HasTimes(entry) && entry.at("label").is_string() && keys.is_array() && !keys.empty() &&
           std::ranges::all_of(keys, [](const json& key) {
               return key.is_array() && key.size() == 2 && key[0].is_number() && key[1].is_number();
           });
}

bool IsListOf(bool (*isEntry)(const json&), const json& list) {
    return list.is_array() && std::ranges::all_of(list, isEntry);
}

bool IsShowable(const json& result) {
    return result.at("version") == kJsonVersion && result.at("code").is_number_integer() &&
           result.at("message").is_string() && IsListOf(IsPhoneme, result.at("phonemes")) &&
           IsListOf(IsWord, result.at("words")) && IsListOf(IsSpan, result.at("events")) &&
           IsListOf(IsFrame, result.at("frames")) && IsListOf(IsCurve, result.at("curves"));
}

} // namespace

void RequireShowableJson(const std::string& path, const std::string& text) {
    std::string reason;
    try {
        if (IsShowable(json::parse(text))) {
            return;
        }
    } catch (const json::exception& error) {
        reason = std::string("\n  ") + error.what();
    }
    throw Failure(kExitFailed, path + ": is not JSON of align, recognize or animate" + reason);
}

std::vector<mouth_frame> ReadShownFrames(const std::string& path, const std::string& text) {
    const auto time = [&path](const json& entry) {
        const double ms = entry;
        if (!(ms >= 0 && ms <= std::numeric_limits<int32_t>::max())) {
            throw Failure(kExitFailed, path + ": a frame at " + entry.dump() + " ms");
        }
        return static_cast<int32_t>(ms);
    };
    const json result = json::parse(text);
    std::vector<mouth_frame> frames;
    for (const json& entry : result.at("frames")) {
        mouth_frame frame{time(entry.at("start_ms")), time(entry.at("end_ms")), {}};
        for (const auto& [label, weight] : entry.at("weights").items()) {
            const double most = std::numeric_limits<float>::max();
            frame.weights.emplace_back(
                label, static_cast<float>(std::clamp(weight.get<double>(), -most, most)));
        }
        frames.push_back(std::move(frame));
    }
    return frames;
}

std::string MakeViewPage(const std::string& title, const std::string& json,
                         const page_audio& audio) {
    return FillIn(kViewSources.page, {{"title", EscapeMarkup(title)},
                                      {"style", kViewSources.style},
                                      {"script", Script()},
                                      {"mouth", kViewSources.mouth},
                                      {"result", EscapeJson(json)},
                                      {"audio", AudioElements(audio)}});
}
