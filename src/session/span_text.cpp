#include "session/span_text.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

#include "session/near_characters.h"
#include "tessarin/converted_text.h"
#include "tessarin/transcriber.h"

namespace tessarin {

namespace {

constexpr std::string_view kMark = "\xEF\xBB\xBF";

/// Nothing when the code page lacks a character of the text.
std::optional<std::string> ConvertToLocal(std::string utf8, const TranscriberInfo& info) {
    IQuibConvertedText* const converted =
        ConvertTextForAlignment2(&info, utf8.data(), static_cast<int32_t>(utf8.size()), kUtf8Text);
    if (converted == nullptr) {
        return std::nullopt;
    }
    std::string local = converted->GetText();
    converted->Release();
    return local;
}

std::string LocalOrNear(const std::string& character, char32_t code, const TranscriberInfo& info) {
    if (std::optional<std::string> exact = ConvertToLocal(character, info)) {
        return *exact;
    }
    return std::string(FindNearCharacters(code).value_or(" "));
}

} // namespace

SpanText::SpanText(std::string_view utf8, const TranscriberInfo& info) : original(utf8) {
    const char* const text = original.data();
    const char* const end = text + original.size();
    std::map<char32_t, std::string> known;
    for (const char* at = text + (utf8.starts_with(kMark) ? kMark.size() : 0); at != end;) {
        const char* const first = at;
        const char32_t code = utf8::next(at, end);
        if (code < 0x80) {
            local += static_cast<char>(code);
        } else {
            const auto [entry, isNew] = known.try_emplace(code);
            if (isNew) {
                entry->second = LocalOrNear(std::string(first, at), code, info);
            }
            local += entry->second;
        }
        owners.resize(local.size(), static_cast<uint32_t>(starts.size()));
        starts.push_back(static_cast<uint32_t>(first - text));
    }
    owners.push_back(static_cast<uint32_t>(starts.size()));
    starts.push_back(static_cast<uint32_t>(original.size()));
}

SpanText::SpanText(std::string_view script, ScriptReading said, const TranscriberInfo& info)
    : SpanText(said.GetSpoken(), info) {
    given = script;
    reading = std::make_unique<ScriptReading>(std::move(said));
}

SpanText::place SpanText::FindOriginal(int32_t offset, int32_t length) const {
    const place converted = FindInConverted(offset, length);
    if (reading == nullptr) {
        return converted;
    }
    const script_place found = FindSource(offset, length).place;
    return {static_cast<int32_t>(found.offset), static_cast<int32_t>(found.length)};
}

ScriptReading::source SpanText::FindSource(int32_t offset, int32_t length) const {
    if (reading == nullptr) {
        return {};
    }
    const place converted = FindInConverted(offset, length);
    return reading->FindSource(static_cast<size_t>(converted.offset),
                               static_cast<size_t>(converted.length));
}

SpanText::place SpanText::FindInConverted(int32_t offset, int32_t length) const {
    const auto limit = static_cast<int64_t>(local.size());
    const int64_t first = std::clamp<int64_t>(offset, 0, limit);
    const int64_t end = std::clamp<int64_t>(int64_t{offset} + length, first, limit);
    const uint32_t start = starts[owners[static_cast<size_t>(first)]];
    if (end == first) {
        return {static_cast<int32_t>(start), 0};
    }
    // What is not seen after the last character, such as its accent, belongs to it.
    const uint32_t last = owners[static_cast<size_t>(end - 1)];
    const uint32_t next = std::max(owners[static_cast<size_t>(end)], last + 1);
    return {static_cast<int32_t>(start), static_cast<int32_t>(starts[next] - start)};
}

std::string SpanText::GetOriginal(place stretch) const {
    const std::string& text = reading != nullptr ? given : original;
    return text.substr(static_cast<size_t>(stretch.offset), static_cast<size_t>(stretch.length));
}

} // namespace tessarin
