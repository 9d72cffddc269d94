#include "platform/temp_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

namespace tessarin {
namespace {

namespace fs = std::filesystem;

/// The first three characters of the name of a file made for `hint`.
std::string PrefixFor(const char* hint) {
    const fs::path path = MakeTempFileName(hint);
    EXPECT_EQ(fs::file_size(path), 0u);
    fs::remove(path);
    return path.filename().string().substr(0, 3);
}

TEST(MakeTempFileName, MakesANewFileEachTime) {
    std::set<std::string> paths;
    for (int i = 0; i < 5; ++i) {
        const std::string path = MakeTempFileName("quibtemp.bin");
        EXPECT_TRUE(fs::is_regular_file(path));
        paths.insert(path);
    }
    EXPECT_EQ(paths.size(), 5u);
    for (const std::string& path : paths) {
        fs::remove(path);
    }
}

TEST(MakeTempFileName, TakesThePrefixBehindTheLastBackslash) {
    EXPECT_EQ(PrefixFor("a\\b\\words.bin"), "wor");
    for (const char* hint : {"words.bin", "folder/words.bin", ""}) {
        EXPECT_EQ(PrefixFor(hint), "qui") << hint;
    }
}

TEST(CreateUniqueFile, IsEmptyWithoutAFolder) {
    EXPECT_EQ(CreateUniqueFile("no such folder", "abc"), "");
}

} // namespace
} // namespace tessarin
