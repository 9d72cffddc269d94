#include "platform/windows/wide_text.h"

#include <windows.h>

namespace tessarin {

namespace {

/// Empty when the text is not of the code page.
std::wstring Widen(std::string_view text, UINT codePage, DWORD flags) {
    const auto size = static_cast<int>(text.size());
    const int length = MultiByteToWideChar(codePage, flags, text.data(), size, nullptr, 0);
    std::wstring wide(static_cast<size_t>(length), L'\0');
    MultiByteToWideChar(codePage, flags, text.data(), size, wide.data(), length);
    return wide;
}

} // namespace

std::wstring WideText(std::string_view text) {
    const std::wstring wide = Widen(text, CP_UTF8, MB_ERR_INVALID_CHARS);
    return wide.empty() ? Widen(text, CP_ACP, 0) : wide;
}

std::string Utf8Text(std::wstring_view text) {
    const auto length = static_cast<int>(text.size());
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, narrow.data(), size, nullptr, nullptr);
    return narrow;
}

std::wstring WidePath(std::string_view path) {
    std::wstring wide = WideText(path);
    if (wide.size() < MAX_PATH - 12 || wide.starts_with(L"\\\\")) {
        return wide;
    }
    // Such a path must be whole, with backslashes, as nothing else reads it.
    const DWORD length = GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr);
    std::wstring full(length, L'\0');
    full.resize(GetFullPathNameW(wide.c_str(), length, full.data(), nullptr));
    return full.empty() ? wide : L"\\\\?\\" + full;
}

} // namespace tessarin
