#include "apps/tessarin/console/system.h"

#if defined(_WIN32)
#include <filesystem>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h>

std::vector<std::string> PrepareConsole(int argc, char** argv) {
    SetConsoleOutputCP(CP_UTF8);
    SetConsoleCP(CP_UTF8);
    for (std::FILE* stream : {stdin, stdout}) {
        _setmode(_fileno(stream), _O_BINARY);
    }
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    if (wide == nullptr) {
        return {argv, argv + argc};
    }
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i) {
        const int size = WideCharToMultiByte(CP_UTF8, 0, wide[i], -1, nullptr, 0, nullptr, nullptr);
        std::string text(static_cast<size_t>(size), '\0');
        WideCharToMultiByte(CP_UTF8, 0, wide[i], -1, text.data(), size, nullptr, nullptr);
        text.pop_back(); // the zero at the end
        arguments.push_back(text);
    }
    LocalFree(wide);
    return arguments;
}

std::FILE* OpenForReading(const std::string& path) {
    return _wfopen(std::filesystem::path(path).c_str(), L"rb");
}
#else
std::vector<std::string> PrepareConsole(int argc, char** argv) {
    return {argv, argv + argc};
}

std::FILE* OpenForReading(const std::string& path) {
    return std::fopen(path.c_str(), "rb");
}
#endif
