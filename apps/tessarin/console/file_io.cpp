#include "apps/tessarin/console/file_io.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <mutex>
#include <string>
#include <system_error>

#include <utf8.h>

#include "apps/tessarin/console/failure.h"

namespace {

namespace fs = std::filesystem;

std::string ReadStream(std::istream& stream) {
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::string WithReason(const std::string& what, int reason) {
    return reason == 0 ? what : what + ": " + std::generic_category().message(reason);
}

/// The file that `path` leads to, which stays where it is when it is a device or a pipe; where no
/// file is yet, the place where its links end.
fs::path TargetOf(fs::path path) {
    constexpr int kMaxLinks = 40;
    std::error_code failure;
    if (fs::exists(path, failure)) {
        const fs::path file =
            fs::is_regular_file(path, failure) ? fs::canonical(path, failure) : "";
        return failure || file.empty() ? path : file;
    }
    for (int links = 0; links < kMaxLinks && fs::is_symlink(path, failure); ++links) {
        path = path.parent_path() / fs::read_symlink(path, failure); // an absolute one replaces all
    }
    return path;
}

fs::path Beside(const fs::path& target) {
    return target.string() + ".part";
}

enum class replacement {
    kBeside,     ///< a new file takes the place of the old one
    kInPlace,    ///< what cannot be replaced: a pipe, a device, a file of several names
    kLastResort, ///< a file whose folder takes no new one
};

replacement ReplacementOf(const fs::path& target) {
    std::error_code failure;
    const bool exists = fs::exists(target, failure);
    if (exists &&
        (!fs::is_regular_file(target, failure) || fs::hard_link_count(target, failure) > 1)) {
        return replacement::kInPlace;
    }
    const fs::path beside = Beside(target);
    const bool wasThere = fs::exists(beside, failure);
    if (!std::ofstream(beside, std::ios::binary | std::ios::app)) {
        return exists ? replacement::kLastResort : replacement::kInPlace;
    }
    if (!wasThere) {
        fs::remove(beside, failure);
    }
    return replacement::kBeside;
}

} // namespace

std::string ReadWholeFile(const std::string& path) {
    // What a stream held is not there a second time, so it is kept.
    static std::mutex lock;
    static std::map<std::string, std::string> streams;
    const std::unique_lock guard(lock);
    if (const auto read = streams.find(path); read != streams.end()) {
        return read->second;
    }
    if (path == "-") {
        return streams[path] = ReadStream(std::cin);
    }
    if (fs::is_directory(path)) {
        throw Failure(kExitFailed, path + ": is a folder, not a file");
    }
    errno = 0;
    std::ifstream file(fs::path(path), std::ios::binary);
    if (!file) {
        throw Failure(kExitFailed, WithReason(path + ": cannot be opened", errno));
    }
    file.seekg(0, std::ios::end);
    const std::streamoff size = file.tellg();
    if (size < 0) { // a pipe, such as <(...) of a shell
        file.clear();
        return streams[path] = ReadStream(file);
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
    const fs::path target = TargetOf(path);
    const replacement how = ReplacementOf(target);
    const fs::path written = how == replacement::kBeside ? Beside(target) : target;
    errno = 0;
    {
        std::ofstream file(written, std::ios::binary | std::ios::trunc);
        file << content << std::flush;
        if (!file) {
            const int reason = errno;
            if (how == replacement::kBeside) {
                std::error_code ignored;
                fs::remove(written, ignored);
            }
            throw Failure(kExitFailed, WithReason(path + ": cannot be written", reason));
        }
    }
    if (how == replacement::kBeside) {
        std::error_code failure;
        fs::rename(written, target, failure);
        if (failure) {
            std::error_code ignored;
            fs::remove(written, ignored);
            throw Failure(kExitFailed, path + ": cannot be written: " + failure.message());
        }
    }
    if (how == replacement::kLastResort) {
        SayWrittenInPlace(path);
    }
}

bool IsReplaceable(const std::string& path) {
    return ReplacementOf(TargetOf(path)) != replacement::kLastResort;
}

void SayWrittenInPlace(const std::string& path) {
    std::fprintf(stderr,
                 "tessarin: %s: written in place, since its folder takes no new file beside it\n",
                 path.c_str());
}
