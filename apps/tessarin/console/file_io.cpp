#include "apps/tessarin/console/file_io.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <string>
#include <system_error>

#include <utf8.h>

#include "apps/tessarin/console/failure.h"

namespace {

std::string ReadStream(std::istream& stream) {
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::string WithReason(const std::string& what, int reason) {
    return reason == 0 ? what : what + ": " + std::generic_category().message(reason);
}

} // namespace

std::string ReadWholeFile(const std::string& path) {
    // What a stream held is not there a second time, so it is kept.
    static std::map<std::string, std::string> streams;
    if (const auto read = streams.find(path); read != streams.end()) {
        return read->second;
    }
    if (path == "-") {
        return streams[path] = ReadStream(std::cin);
    }
    if (std::filesystem::is_directory(path)) {
        throw Failure(kExitFailed, path + ": is a folder, not a file");
    }
    errno = 0;
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    if (!file) {
        throw Failure(kExitFailed, WithReason(path + ": cannot be opened", errno));
    }
    const std::streamoff size = file.tellg();
    if (size < 0) { // a pipe or a device
        file.close();
        std::ifstream stream(path, std::ios::binary);
        return streams[path] = ReadStream(stream);
    }
    std::string content(static_cast<size_t>(size), '\0');
    file.seekg(0);
    file.read(content.data(), size);
    if (!file) {
        throw Failure(kExitFailed, WithReason(path + ": cannot be read", errno));
    }
    return content;
}

std::string ReadUtf8File(const std::string& path) {
    std::string bytes = ReadWholeFile(path);
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        return bytes.substr(3);
    }
    const bool isLittle = bytes.starts_with("\xFF\xFE");
    if (!isLittle && !bytes.starts_with("\xFE\xFF")) {
        return bytes;
    }
    std::u16string units;
    for (size_t i = 2; i + 1 < bytes.size(); i += 2) {
        const auto low = static_cast<uint8_t>(bytes[isLittle ? i : i + 1]);
        const auto high = static_cast<uint8_t>(bytes[isLittle ? i + 1 : i]);
        units += static_cast<char16_t>(high << 8 | low);
    }
    try {
        return utf8::utf16to8(units);
    } catch (const utf8::exception&) {
        throw Failure(kExitFailed, path + ": is not valid UTF-16");
    }
}

void WriteOutput(const std::string& path, const std::string& content) {
    if (path == "-") {
        std::cout << content << std::flush;
        if (!std::cout) {
            throw Failure(kExitFailed, "standard output: cannot be written");
        }
        return;
    }
    namespace fs = std::filesystem;
    std::error_code ignored;
    // A pipe or a device cannot be replaced by a file; it is written as it stands.
    const bool inPlace = fs::exists(path, ignored) && !fs::is_regular_file(path, ignored);
    const std::string beside = inPlace ? path : path + ".part";
    errno = 0;
    {
        std::ofstream file(beside, std::ios::binary | std::ios::trunc);
        file << content << std::flush;
        if (!file) {
            const int reason = errno;
            if (!inPlace) {
                fs::remove(beside, ignored);
            }
            throw Failure(kExitFailed, WithReason(path + ": cannot be written", reason));
        }
    }
    if (!inPlace) {
        std::error_code failure;
        fs::rename(beside, path, failure);
        if (failure) {
            fs::remove(beside, ignored);
            throw Failure(kExitFailed, path + ": cannot be written: " + failure.message());
        }
    }
}
