#include "apps/tessarin/options/data_folder.h"

#include <system_error>

#if defined(_WIN32)
#include <windows.h>
#endif

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/options/engine_data.h"

namespace {

namespace fs = std::filesystem;

fs::path ExecutablePath() {
#if defined(_WIN32)
    wchar_t buffer[32768];
    const DWORD length = GetModuleFileNameW(nullptr, buffer, 32768);
    return fs::path(std::wstring(buffer, length));
#else
    std::error_code failure;
    const fs::path path = fs::read_symlink("/proc/self/exe", failure);
    return failure ? fs::current_path(failure) / "tessarin" : path;
#endif
}

} // namespace

fs::path FindDataFolder(const std::string& given) {
    std::error_code ignored;
    if (!given.empty()) {
        if (!fs::is_directory(given, ignored)) {
            throw Failure(kExitFailed, given + ": the data folder does not exist");
        }
        return given;
    }
    const fs::path executable = ExecutablePath();
    for (fs::path folder = executable.parent_path();; folder = folder.parent_path()) {
        for (const char* below : {"share/tessarin", "data"}) {
            if (fs::exists(folder / below / kModelName, ignored)) {
                return folder / below;
            }
        }
        if (folder == folder.parent_path()) {
            break;
        }
    }
    throw Failure(kExitFailed, "no data folder with " + std::string(kModelName) +
                                   " beside the tool; name one with --data, or the files with "
                                   "--model and --lexicon");
}
