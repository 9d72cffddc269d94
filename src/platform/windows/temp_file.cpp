#include "platform/temp_file.h"

#include <array>
#include <windows.h>

#include "platform/windows/wide_text.h"

namespace tessarin {

std::string TempFolder() {
    std::array<wchar_t, MAX_PATH + 1> folder = {};
    const DWORD length = GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
    return length > 0 && length < folder.size() ? Utf8Text({folder.data(), length}) : "";
}

std::string CreateUniqueFile(const std::string& folder, const std::string& prefix) {
    std::array<wchar_t, MAX_PATH + 1> path = {};
    const UINT unique =
        GetTempFileNameW(WideText(folder).c_str(), WideText(prefix).c_str(), 0, path.data());
    return unique != 0 ? Utf8Text(path.data()) : "";
}

} // namespace tessarin
