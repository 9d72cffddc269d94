#include "platform/temp_file.h"

#include <array>
#include <windows.h>

namespace tessarin {

std::string TempFolder() {
    std::array<char, MAX_PATH + 1> folder = {};
    const DWORD length = GetTempPathA(static_cast<DWORD>(folder.size()), folder.data());
    return length > 0 && length < folder.size() ? std::string(folder.data(), length) : "";
}

std::string CreateUniqueFile(const std::string& folder, const std::string& prefix) {
    std::array<char, MAX_PATH + 1> path = {};
    const UINT unique = GetTempFileNameA(folder.c_str(), prefix.c_str(), 0, path.data());
    return unique != 0 ? path.data() : "";
}

} // namespace tessarin
