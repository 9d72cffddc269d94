#include "base/whole_file.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

#include "base/flog.h"
#include "platform/binary_file.h"
#include "platform/stdio_file.h"

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

/// Where a chain of links ends, also where no file is yet. Nothing for links that run in a circle.
std::optional<fs::path> FollowLinks(fs::path path) {
    constexpr int kMaxLinks = 40;
    std::error_code failure;
    for (int links = 0; links < kMaxLinks; ++links) {
        if (!fs::is_symlink(fs::symlink_status(path, failure))) {
            return path;
        }
        path = path.parent_path() / fs::read_symlink(path, failure); // an absolute one replaces all
    }
    return std::nullopt;
}

/// Opens a file of a new name next to `target`.
file_ptr OpenBeside(const std::string& target, std::string& path) {
    constexpr int kMostAttempts = 1000;
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
        path = target + ".new" + std::to_string(attempt);
        file_ptr file(OpenStdio(path.c_str(), "wbx"));
        if (file != nullptr || errno != EEXIST) {
            return file;
        }
    }
    return nullptr;
}

/// Writes a file next to `target`, with the given rights where there are any, and gives it that
/// name. kFileLocked when the folder does not take the file or the name.
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
        fs::permissions(PathOf(path), rights, failure);
    }
    if (code == kNoError) {
        fs::rename(PathOf(path), PathOf(target), failure);
        code = failure ? kFileLocked : kNoError;
    }
    if (code != kNoError) {
        fs::remove(PathOf(path), failure);
    }
    return code;
}

error_code OverwriteFrom0(const std::string& target, std::span<const uint8_t> content) {
    file_ptr file(OpenStdio(target.c_str(), "r+b"));
    if (file == nullptr) {
        return kFileLocked;
    }
    const error_code code = WriteAndClose(std::move(file), content);
    std::error_code failure;
    if (code == kNoError) {
        fs::resize_file(PathOf(target), content.size(), failure);
    }
    return failure ? kWriteFailed : code;
}

/// Writes over the old contents, which come back as far as they can when the new ones do not fit.
error_code WriteInPlace(const std::string& target, std::span<const uint8_t> content) {
    uint32_t oldSize = 0;
    const auto old = ReadWholeFile(target.c_str(), &oldSize, false);
    const error_code code = OverwriteFrom0(target, content);
    if (code == kWriteFailed &&
        (old == nullptr || OverwriteFrom0(target, {old.get(), oldSize}) != kNoError)) {
        flog::Message("WriteWholeFile: %s has lost its old contents", target.c_str());
    }
    return code;
}

/// Replaces the file at `target`, which can be written.
error_code Replace(const std::string& target, std::span<const uint8_t> content, fs::perms rights) {
    std::error_code failure;
    if (fs::hard_link_count(PathOf(target), failure) > 1 && !failure) {
        return WriteInPlace(target, content); // all its names go on meaning one file
    }
    const error_code code = WriteBeside(target, content, rights);
    if (code != kFileLocked) {
        return code;
    }
    flog::Message("WriteWholeFile: %s is written in place, since it cannot be replaced",
                  target.c_str());
    return WriteInPlace(target, content);
}

/// Makes a file where there is none.
error_code Make(const std::string& target, std::span<const uint8_t> content) {
    const error_code beside = WriteBeside(target, content, fs::perms::unknown);
    if (beside != kFileLocked) {
        return beside;
    }
    file_ptr file(OpenStdio(target.c_str(), "wbx")); // a name that has no room for an ending
    if (file == nullptr) {
        return kFileLocked;
    }
    const error_code written = WriteAndClose(std::move(file), content);
    if (written != kNoError) {
        std::error_code failure;
        fs::remove(target, failure); // nobody takes the half of a file for the whole
    }
    return written;
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
    const fs::file_status old = fs::status(PathOf(path), failure);
    if (!fs::exists(old)) {
        const std::optional<fs::path> target = FollowLinks(PathOf(path));
        return target ? Make(TextOf(*target), content) : kFileLocked;
    }
    file_ptr probe(OpenStdio(path, "r+b"));
    if (probe == nullptr) {
        return kFileLocked;
    }
    if (!fs::is_regular_file(old)) {
        return WriteAndClose(std::move(probe), content); // a device has no old contents to lose
    }
    probe.reset();
    const fs::path target = fs::canonical(PathOf(path), failure); // a link stays a link
    return failure ? kFileLocked : Replace(TextOf(target), content, old.permissions());
}

} // namespace tessarin
