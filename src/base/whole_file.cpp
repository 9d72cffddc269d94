#include "base/whole_file.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

#include "platform/binary_file.h"

namespace tessarin {
namespace {

namespace fs = std::filesystem;

struct close_file {
    void operator()(FILE* file) const { std::fclose(file); }
};
using file_ptr = std::unique_ptr<FILE, close_file>;

bool OpenSeekable(const char* path, BinaryFile& file) {
    return file.Open(path) == open_failure::kNone && file.Seek(0);
}

error_code WriteAndClose(file_ptr file, std::span<const uint8_t> content) {
    const bool arrived =
        content.empty() || std::fwrite(content.data(), content.size(), 1, file.get()) == 1;
    return std::fclose(file.release()) == 0 && arrived ? kNoError : kWriteFailed;
}

/// Opens a file of a new name next to `target`.
file_ptr OpenBeside(const std::string& target, std::string& path) {
    constexpr int kMostAttempts = 1000;
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
        path = target + ".new" + std::to_string(attempt);
        file_ptr file(std::fopen(path.c_str(), "wbx"));
        if (file != nullptr || errno != EEXIST) {
            return file;
        }
    }
    return nullptr;
}

/// Writes a file next to `target`, with the given rights where there are any, and gives it that
/// name.
error_code WriteBeside(const std::string& target, std::span<const uint8_t> content,
                       fs::perms rights) {
    std::string path;
    file_ptr file = OpenBeside(target, path);
    if (file == nullptr) {
        return kFileLocked;
    }
    error_code code = WriteAndClose(std::move(file), content);
    std::error_code failure;
    if (code == kNoError && rights != fs::perms::unknown) {
        fs::permissions(path, rights, failure);
    }
    if (code == kNoError) {
        fs::rename(path, target, failure);
        code = failure ? kFileLocked : kNoError;
    }
    if (code != kNoError) {
        fs::remove(path, failure);
    }
    return code;
}

} // namespace

std::unique_ptr<uint8_t[]> ReadWholeFile(const char* path, uint32_t* size, bool addNul) {
    BinaryFile file;
    if (!OpenSeekable(path, file) || file.GetSize() > int64_t{UINT32_MAX}) {
        return nullptr;
    }
    const auto stated = static_cast<size_t>(file.GetSize());
    auto bytes = std::make_unique_for_overwrite<uint8_t[]>(stated + (addNul ? 1 : 0));
    const int64_t got = file.Read(bytes.get(), stated);
    if (got < 0) {
        return nullptr;
    }
    if (addNul) {
        bytes[static_cast<size_t>(got)] = 0;
    }
    *size = static_cast<uint32_t>(got);
    return bytes;
}

bool FileExists(const char* path) {
    BinaryFile file;
    return OpenSeekable(path, file);
}

error_code WriteWholeFile(const char* path, std::span<const uint8_t> content) {
    if (path == nullptr) {
        return kFileLocked;
    }
    std::error_code failure;
    const fs::file_status old = fs::status(path, failure);
    if (!fs::exists(old)) {
        return WriteBeside(path, content, fs::perms::unknown);
    }
    file_ptr probe(std::fopen(path, "r+b"));
    if (probe == nullptr) {
        return kFileLocked;
    }
    if (!fs::is_regular_file(old)) {
        return WriteAndClose(std::move(probe), content); // a device has no old contents to lose
    }
    probe.reset();
    const fs::path target = fs::canonical(path, failure); // a link stays a link
    return failure ? kFileLocked : WriteBeside(target.string(), content, old.permissions());
}

} // namespace tessarin
