#include "apps/tessarin/readers/spoken_text.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include <utf8.h>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/readers/near_characters.h"

namespace {

using tessarin::IQuibConvertedText;

struct text_releaser {
    void operator()(IQuibConvertedText* text) const { text->Release(); }
};
using converted_text = std::unique_ptr<IQuibConvertedText, text_releaser>;

converted_text Convert(const tessarin::TranscriberInfo& info, std::string text,
                       tessarin::text_encoding encoding) {
    return converted_text(
        ConvertTextForAlignment2(&info, text.data(), static_cast<int32_t>(text.size()), encoding));
}

void AppendUtf8(char32_t character, std::string& text) {
    utf8::append(character, std::back_inserter(text));
}

/// Most characters of a text in 16-bit units are Latin, so every other byte is 0.
bool HasZerosAt(std::string_view text, size_t first) {
    size_t zeros = 0;
    for (size_t i = first; i < text.size(); i += 2) {
        zeros += text[i] == '\0' ? 1 : 0;
    }
    return zeros * 2 > text.size() / 2;
}

Failure NoText(const std::string& source, const char* why) {
    return Failure(kExitFailed, source + ": " + why);
}

} // namespace

SpokenText::SpokenText(const std::string& source, std::string userBytes,
                       const std::string& encoding, tessarin::IVisemixTranscriber& transcriber)
    : bytes(std::move(userBytes)) {
    tessarin::TranscriberInfo info = {};
    transcriber.getTranscriberInfo(&info);
    ReadUser(source, encoding, info);
    MakeLocal(info);
}

SpokenText::SpokenText(const std::string& source, std::string userBytes,
                       const std::string& encoding, tessarin::IVisemixTranscriber& transcriber,
                       const script_request& request)
    : bytes(std::move(userBytes)) {
    tessarin::TranscriberInfo info = {};
    transcriber.getTranscriberInfo(&info);
    ReadUser(source, encoding, info);
    ReadScript(source, request, transcriber);
    MakeLocal(info);
}

void SpokenText::ReadUser(const std::string& source, const std::string& encoding,
                          const tessarin::TranscriberInfo& info) {
    if (bytes.size() > static_cast<size_t>(std::numeric_limits<int32_t>::max()) / 4) {
        throw NoText(source, "the text is too long");
    }
    size_t markLength = 0;
    const form found = FindForm(source, encoding, &markLength);
    ReadCharacters(source, found, markLength, info);
    for (size_t i = 0; i + 1 < characters.size(); ++i) {
        utf8Starts.push_back(static_cast<uint32_t>(userUtf8.size()));
        AppendUtf8(characters[i].code, userUtf8);
    }
    utf8Starts.push_back(static_cast<uint32_t>(userUtf8.size()));
}

void SpokenText::ReadScript(const std::string& source, const script_request& request,
                            tessarin::IVisemixTranscriber& transcriber) {
    tessarin_script* made = nullptr;
    const int32_t code =
        tessarin_create_script(request.language, userUtf8.c_str(), request.options, &made);
    script.reset(made);
    if (code != tessarin::kNoError) {
        throw Failure(kExitFailed, DescribeCode(source, code));
    }
    const int32_t wrapped = CreateScriptTranscriber(&transcriber, script.get(), &readings);
    if (wrapped != tessarin::kNoError) {
        throw EngineFailure(source, wrapped);
    }
    readingsOwner.reset(readings);
    const std::string_view said = tessarin_get_script_text(script.get());
    for (const char* at = said.begin(); at != said.end();) {
        const auto start = static_cast<uint32_t>(at - said.begin());
        spoken.push_back({utf8::next(at, said.end()), start});
    }
    spoken.push_back({0, static_cast<uint32_t>(said.size())});
}

SpokenText::form SpokenText::FindForm(const std::string& source, const std::string& encoding,
                                      size_t* markLength) const {
    const std::string_view text = bytes;
    if (text.starts_with("\xEF\xBB\xBF") && (encoding == "auto" || encoding == "utf-8")) {
        *markLength = 3;
        return form::kUtf8;
    }
    const bool mayBeUtf16 = encoding == "auto" || encoding == "utf-16";
    if (mayBeUtf16 && (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF"))) {
        *markLength = 2;
        return text[0] == '\xFF' ? form::kUtf16 : form::kUtf16Swapped;
    }
    if (encoding != "auto") {
        return encoding == "utf-8"    ? form::kUtf8
               : encoding == "utf-16" ? form::kUtf16
                                      : form::kLocal;
    }
    if (text.find('\0') == std::string_view::npos) {
        return utf8::is_valid(text.begin(), text.end()) ? form::kUtf8 : form::kLocal;
    }
    if (!HasZerosAt(text, 0) && !HasZerosAt(text, 1)) {
        throw NoText(source, "is not a plain text");
    }
    return HasZerosAt(text, 1) ? form::kUtf16 : form::kUtf16Swapped;
}

void SpokenText::ReadCharacters(const std::string& source, form ofText, size_t from,
                                const tessarin::TranscriberInfo& info) {
    const auto add = [&](char32_t code, size_t start) {
        if (code == 0) {
            throw NoText(source, "is not a plain text");
        }
        characters.push_back({code, static_cast<uint32_t>(start)});
    };
    try {
        if (ofText == form::kUtf8) {
            for (auto at = bytes.cbegin() + static_cast<ptrdiff_t>(from); at != bytes.cend();) {
                const auto start = static_cast<size_t>(at - bytes.cbegin());
                add(utf8::next(at, bytes.cend()), start);
            }
        } else if (ofText == form::kLocal) {
            // Each byte by itself, so that a zero does not end the text unseen.
            std::array<std::optional<char32_t>, 256> known;
            for (size_t i = 0; i < bytes.size(); ++i) {
                std::optional<char32_t>& code = known[static_cast<uint8_t>(bytes[i])];
                if (!code) {
                    const converted_text wide =
                        Convert(info, bytes.substr(i, 1), tessarin::kLocalText);
                    code = wide != nullptr ? wide->GetWideText()[0] : U' ';
                }
                add(*code, i);
            }
        } else {
            ReadUtf16(ofText == form::kUtf16Swapped, from);
            if (std::ranges::count(characters, char32_t{0}, &character::code) > 0) {
                throw NoText(source, "is not a plain text");
            }
        }
    } catch (const utf8::exception&) {
        throw Failure(kExitFailed, DescribeCode(source, tessarin::kInvalidUtf8));
    }
    characters.push_back({0, static_cast<uint32_t>(bytes.size())});
}

void SpokenText::ReadUtf16(bool swapped, size_t from) {
    const auto unitAt = [&](size_t at) {
        const auto first = static_cast<uint8_t>(bytes[at]);
        const auto second = static_cast<uint8_t>(bytes[at + 1]);
        return static_cast<char16_t>(swapped ? first << 8 | second : second << 8 | first);
    };
    for (size_t i = from; i + 1 < bytes.size();) {
        const char16_t units[] = {unitAt(i), i + 3 < bytes.size() ? unitAt(i + 2) : char16_t{0}};
        const bool isPair = utf8::internal::is_lead_surrogate(units[0]);
        const std::u16string one(units, isPair ? 2 : 1);
        const std::string asUtf8 = utf8::utf16to8(one); // throws for half a pair
        characters.push_back(
            {utf8::peek_next(asUtf8.begin(), asUtf8.end()), static_cast<uint32_t>(i)});
        i += 2 * one.size();
    }
}

void SpokenText::MakeLocal(const tessarin::TranscriberInfo& info) {
    std::map<char32_t, std::optional<std::string>> known;
    const auto inCodePage = [&](char32_t code) -> const std::optional<std::string>& {
        const auto [entry, isNew] = known.try_emplace(code);
        if (isNew) {
            std::string utf8;
            AppendUtf8(code, utf8);
            if (const converted_text converted = Convert(info, utf8, tessarin::kUtf8Text)) {
                entry->second = converted->GetText();
            }
        }
        return entry->second;
    };
    const std::vector<character>& converted = script ? spoken : characters;
    for (size_t i = 0; i + 1 < converted.size(); ++i) {
        const char32_t code = converted[i].code;
        if (code < 0x80) {
            local += static_cast<char>(code);
        } else if (const std::optional<std::string>& exact = inCodePage(code)) {
            local += *exact;
        } else if (const auto near = FindNearCharacters(code)) {
            local += *near;
        } else {
            local += ' ';
            ++lost;
        }
        owners.resize(local.size(), static_cast<uint32_t>(i));
    }
    owners.push_back(static_cast<uint32_t>(converted.size() - 1));
}

SpokenText::place SpokenText::FindOriginal(int32_t offset, int32_t length) const {
    const std::optional<tessarin_script_part> part = FindPart(offset, length);
    if (!part) {
        return FindOwners(offset, length);
    }
    return FindOfUtf8(part->text_offset, part->text_length);
}

std::optional<tessarin_script_part> SpokenText::FindPart(int32_t offset, int32_t length) const {
    if (!script) {
        return std::nullopt;
    }
    const place said = FindOwners(offset, length);
    tessarin_script_part part{};
    const int32_t code = tessarin_find_script_part(script.get(), said.offset, said.length, &part);
    return code == tessarin::kNoError ? std::optional(part) : std::nullopt;
}

tessarin::IVisemixTranscriber&
SpokenText::TranscriberOr(tessarin::IVisemixTranscriber& plain) const {
    return readings != nullptr ? *readings : plain;
}

std::string SpokenText::FindReading(int32_t offset, const std::string& phonemes) const {
    return readings != nullptr
               ? readings->FindReading(static_cast<uint32_t>(offset), phonemes.c_str())
               : "";
}

size_t SpokenText::GetNumUnsaid() const {
    uint32_t count = 0;
    tessarin_get_script_unsaid(script.get(), &count);
    return count;
}

/// Where a stretch of the local text stands in what it was converted from.
SpokenText::place SpokenText::FindOwners(int32_t offset, int32_t length) const {
    const std::vector<character>& converted = script ? spoken : characters;
    const auto limit = static_cast<int64_t>(local.size());
    const int64_t first = std::clamp<int64_t>(offset, 0, limit);
    const int64_t end = std::clamp<int64_t>(int64_t{offset} + length, first, limit);
    const uint32_t start = converted[owners[static_cast<size_t>(first)]].start;
    if (end == first) {
        return {static_cast<int32_t>(start), 0};
    }
    // What is not seen after the last character, such as its accent, belongs to it.
    const uint32_t last = owners[static_cast<size_t>(end - 1)];
    const uint32_t next = std::max(owners[static_cast<size_t>(end)], last + 1);
    const uint32_t after = converted[next].start;
    return {static_cast<int32_t>(start), static_cast<int32_t>(after - start)};
}

std::string SpokenText::GetUtf8(place stretch) const {
    const auto utf8At = [this](int32_t userByte) {
        const auto at = std::ranges::lower_bound(characters, static_cast<uint32_t>(userByte), {},
                                                 &character::start);
        return utf8Starts[static_cast<size_t>(at - characters.begin())];
    };
    const uint32_t start = utf8At(stretch.offset);
    return userUtf8.substr(start, utf8At(stretch.offset + stretch.length) - start);
}

SpokenText::place SpokenText::FindOfUtf8(int32_t offset, int32_t length) const {
    const auto userByteAt = [this](int64_t utf8Byte) {
        const auto at = std::ranges::lower_bound(utf8Starts, utf8Byte);
        const auto last = static_cast<std::ptrdiff_t>(utf8Starts.size()) - 1;
        return characters[static_cast<size_t>(std::min(at - utf8Starts.begin(), last))].start;
    };
    const uint32_t start = userByteAt(offset);
    const uint32_t end = userByteAt(int64_t{offset} + length);
    return {static_cast<int32_t>(start), static_cast<int32_t>(end - start)};
}
