#include "text/text_conversion.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include <utf8.h>

#include "base/text_copy.h"
#include "tessarin/transcriber.h"
#include "text/code_pages.h"
#include "text/quib_converted_text.h"

namespace tessarin {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";

/// Between wide text and the local code page: by the C library where the transcriber's locale is
/// one of this system, else by our own tables, so that texts convert alike on every system.
class local_text {
public:
    explicit local_text(const TranscriberInfo* info)
        : page(code_page::Find(info != nullptr ? info->code_page : 0)) {
        const std::string name = info != nullptr ? std::string(FieldText(info->locale)) : "";
        if (!name.empty()) {
            const char* const current = std::setlocale(LC_ALL, nullptr);
            previous = current != nullptr ? current : "";
            isLocaleSet = std::setlocale(LC_ALL, name.c_str()) != nullptr;
        }
    }

    /// Kept: this is not a destructor. A host that receives an exception finds the locale as it was
    /// in the middle of the conversion, as its header says.
    void RestoreLocale() const {
        if (isLocaleSet && !previous.empty()) {
            std::setlocale(LC_ALL, previous.c_str());
        }
    }

    /// The text up to its first zero. Nothing when it is not of this locale.
    std::optional<std::u16string> ToWide(const std::string& text) const {
        if (!isLocaleSet) {
            return page.ToWide(text.c_str());
        }
        const size_t length = std::mbstowcs(nullptr, text.c_str(), 0);
        if (length == static_cast<size_t>(-1)) {
            return std::nullopt;
        }
        std::wstring wide(length, L'\0');
        std::mbstowcs(wide.data(), text.c_str(), length);
        return FromWideCharacters(wide);
    }

    /// The text up to its first zero. Nothing when the locale lacks a character of it.
    std::optional<std::string> ToNarrow(const std::u16string& text) const {
        if (!isLocaleSet) {
            return page.ToNarrow(text.c_str());
        }
        const std::wstring wide = ToWideCharacters(text.c_str());
        const size_t length = std::wcstombs(nullptr, wide.c_str(), 0);
        if (length == static_cast<size_t>(-1)) {
            return std::nullopt;
        }
        std::string narrow(length, '\0');
        std::wcstombs(narrow.data(), wide.c_str(), length);
        return narrow;
    }

private:
    // The C library's wide characters are UTF-16 on some systems and UTF-32 on others.
    static std::u16string FromWideCharacters(std::wstring_view wide) {
        if constexpr (sizeof(wchar_t) == sizeof(char16_t)) {
            return {wide.begin(), wide.end()};
        } else {
            std::string utf8;
            utf8::utf32to8(wide.begin(), wide.end(), std::back_inserter(utf8));
            return utf8::utf8to16(utf8);
        }
    }
    static std::wstring ToWideCharacters(std::u16string_view text) {
        if constexpr (sizeof(wchar_t) == sizeof(char16_t)) {
            return {text.begin(), text.end()};
        } else {
            const std::string utf8 = utf8::utf16to8(text);
            std::wstring wide;
            utf8::utf8to32(utf8.begin(), utf8.end(), std::back_inserter(wide));
            return wide;
        }
    }

    code_page page;
    std::string previous;
    bool isLocaleSet = false;
};

/// Kept: line ends of UTF-16 text are put right in the caller's own buffer. Hosts that wrote the
/// two bytes of an 8-bit line end where one 16-bit carriage return belongs show the mended text.
void MendLineEnds(std::span<char> text) {
    for (size_t i = 0; i + 1 < text.size(); i += 2) {
        if (text[i] == '\r' && text[i + 1] == '\n') {
            text[i + 1] = 0;
        }
    }
}

std::u16string ReadUtf16(std::span<const char> text) {
    std::u16string units(text.size() / 2, u'\0');
    for (size_t i = 0; i < units.size(); ++i) {
        units[i] = static_cast<char16_t>(static_cast<uint8_t>(text[2 * i]) |
                                         static_cast<uint8_t>(text[2 * i + 1]) << 8);
    }
    return units;
}

struct both_forms {
    std::optional<std::string> narrow;
    std::optional<std::u16string> wide;
};

both_forms Convert(std::span<const char> text, uint32_t encoding, const local_text& local) {
    both_forms forms;
    switch (encoding) {
    case kUtf8Text:
        forms.wide.emplace();
        utf8::utf8to16(text.begin(), text.end(), std::back_inserter(*forms.wide));
        forms.narrow = local.ToNarrow(*forms.wide);
        break;
    case kUtf16Text:
        forms.wide = ReadUtf16(text);
        // An unpaired surrogate is not a character at all, which throws, not one that a page lacks.
        static_cast<void>(utf8::utf16to8(*forms.wide));
        forms.narrow = local.ToNarrow(*forms.wide);
        break;
    default:
        forms.narrow.emplace(text.begin(), text.end());
        forms.wide = local.ToWide(*forms.narrow);
        break;
    }
    return forms;
}

} // namespace

counted_ptr<IQuibConvertedText> ConvertText(const TranscriberInfo* info, char* text, int32_t length,
                                            uint32_t encoding) {
    std::span<char> rest(text, text != nullptr ? static_cast<size_t>(std::max(length, 0)) : 0);
    const std::string_view bytes(rest.data(), rest.size());
    bool isUtf16 = encoding == kUtf16Text;
    if (bytes.starts_with(kUtf8Mark)) {
        rest = rest.subspan(kUtf8Mark.size());
        encoding = kUtf8Text;
    } else if (bytes.starts_with(kUtf16Mark)) {
        rest = rest.subspan(kUtf16Mark.size());
        encoding = kUtf16Text;
        isUtf16 = true;
    }
    // Kept: text that was called UTF-16 is mended even when its mark then says UTF-8.
    if (isUtf16) {
        MendLineEnds(rest);
    }
    if (encoding != kUtf8Text && encoding != kUtf16Text) {
        encoding = kLocalText;
    }
    const local_text local(info);
    both_forms forms = Convert(rest, encoding, local);
    counted_ptr<IQuibConvertedText> converted;
    if (forms.narrow && forms.wide) {
        converted = counted_ptr<IQuibConvertedText>::Share(
            new CQuibConvertedText(std::move(*forms.narrow), std::move(*forms.wide), encoding));
    }
    local.RestoreLocale();
    return converted;
}

} // namespace tessarin
