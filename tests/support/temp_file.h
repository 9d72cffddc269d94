#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <span>
#include <string>
#include <string_view>

namespace tessarin::test {

/// A file of one test's own in the system's folder for such files, removed at the end. Tests run
/// side by side, so no two get the same name.
class TempFile {
public:
    /// Only the name, with `suffix` at its end; nothing is there yet.
    explicit TempFile(std::string_view suffix = ".bin") {
        std::random_device random;
        const std::string unique = std::to_string(random()) + std::to_string(random());
        const std::string name = "tessarin_test_" + unique + std::string(suffix);
        path = (std::filesystem::temp_directory_path() / name).string();
    }
    TempFile(std::span<const uint8_t> content, std::string_view suffix) : TempFile(suffix) {
        Write(content);
    }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    ~TempFile() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }

    const char* Path() const { return path.c_str(); }

    void Write(std::span<const uint8_t> content) const {
        std::ofstream file(path, std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(content.data()),
                   static_cast<std::streamsize>(content.size()));
    }

    std::string Content() const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

private:
    std::string path;
};

} // namespace tessarin::test
