#include "base/whole_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/byte_builder.h"
#include "support/logged_lines.h"
#include "support/temp_file.h"

namespace tessarin {
namespace {

namespace fs = std::filesystem;
using test::bytes;
using test::TempFile;

const bytes kContent = {'n', 0, 'w'};
const std::string kContentText("n\0w", 3);

/// A folder of the test's own.
class Folder : public TempFile {
public:
    Folder() : TempFile(".folder") { fs::create_directory(Path()); }
    std::string File(const char* name) const { return std::string(Path()) + "/" + name; }
    ptrdiff_t NumFiles() const {
        return std::distance(fs::directory_iterator(Path()), fs::directory_iterator());
    }
};

TEST(ReadWholeFile, GivesAllBytes) {
    for (const bool addNul : {false, true}) {
        const TempFile file(kContent, ".txt");
        uint32_t size = 0;
        const auto read = ReadWholeFile(file.Path(), &size, addNul);
        ASSERT_NE(read, nullptr);
        EXPECT_EQ(std::string(read.get(), read.get() + size), kContentText);
        if (addNul) {
            EXPECT_EQ(read[size], 0);
        }
    }
}

TEST(ReadWholeFile, TellsAnEmptyFileFromNone) {
    const TempFile empty(bytes{}, ".txt");
    const TempFile missing;
    const Folder folder;
    uint32_t size = 7;
    const auto read = ReadWholeFile(empty.Path(), &size, true);
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(read[0], 0);
    EXPECT_TRUE(FileExists(empty.Path()));
    for (const char* path : {missing.Path(), folder.Path(), static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(ReadWholeFile(path, &size, false), nullptr);
        EXPECT_FALSE(FileExists(path));
    }
}

TEST(WriteWholeFile, ReplacesAFileAndLeavesNothingBeside) {
    const Folder folder;
    const std::string path = folder.File("words");
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(WriteWholeFile(path.c_str(), kContent), 0);
        uint32_t size = 0;
        const auto read = ReadWholeFile(path.c_str(), &size, false);
        EXPECT_EQ(std::string(read.get(), read.get() + size), kContentText);
        EXPECT_EQ(folder.NumFiles(), 1);
    }
    EXPECT_EQ(WriteWholeFile(path.c_str(), {}), 0);
    EXPECT_EQ(fs::file_size(path), 0u);
}

TEST(WriteWholeFile, KeepsRightsAndLinks) {
    const Folder folder;
    const std::string path = folder.File("words");
    ASSERT_EQ(WriteWholeFile(path.c_str(), {}), 0);
    const auto rights = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read;
    fs::permissions(path, rights);
    fs::create_symlink("words", folder.File("link"));
    fs::create_symlink(folder.File("link"), folder.File("link to link"));
    ASSERT_EQ(WriteWholeFile(folder.File("link to link").c_str(), kContent), 0);
    EXPECT_TRUE(fs::is_symlink(folder.File("link to link")));
    EXPECT_TRUE(fs::is_symlink(folder.File("link")));
    EXPECT_EQ(fs::file_size(path), kContent.size());
    EXPECT_EQ(fs::status(path).permissions(), rights);

    fs::create_hard_link(path, folder.File("other name"));
    const bytes longer(1000, 7);
    for (const bytes& content : {longer, kContent}) {
        ASSERT_EQ(WriteWholeFile(path.c_str(), content), 0);
        EXPECT_EQ(fs::file_size(folder.File("other name")), content.size());
        EXPECT_EQ(folder.NumFiles(), 4);
    }
}

TEST(WriteWholeFile, MakesTheFileThatALinkAsksFor) {
    const Folder folder;
    fs::create_symlink("words", folder.File("link"));
    ASSERT_EQ(WriteWholeFile(folder.File("link").c_str(), kContent), 0);
    EXPECT_TRUE(fs::is_symlink(folder.File("link")));
    EXPECT_EQ(fs::file_size(folder.File("words")), kContent.size());

    fs::create_symlink("no/words", folder.File("nowhere"));
    fs::create_symlink("circle", folder.File("circle"));
    for (const char* link : {"nowhere", "circle"}) {
        EXPECT_EQ(WriteWholeFile(folder.File(link).c_str(), kContent), 9);
        EXPECT_TRUE(fs::is_symlink(folder.File(link)));
    }
}

TEST(WriteWholeFile, WritesInPlaceWhereNothingCanStandBeside) {
    const Folder folder;
    // No file can be called after one of the longest name.
    const std::string path = folder.File(std::string(255, 'w').c_str());
    for (const bytes& content : {bytes(1000, 7), kContent}) {
        const bool isNew = !fs::exists(path);
        const auto lines =
            test::LoggedLines([&] { EXPECT_EQ(WriteWholeFile(path.c_str(), content), 0); });
        EXPECT_EQ(lines.size(), isNew ? 0u : 1u);
        EXPECT_EQ(fs::file_size(path), content.size());
        EXPECT_EQ(folder.NumFiles(), 1);
    }
}

TEST(WriteWholeFile, AnswersNineWhereNoFileCanBe) {
    const Folder folder;
    EXPECT_EQ(WriteWholeFile(folder.Path(), kContent), 9);
    EXPECT_EQ(WriteWholeFile(folder.File("no/words").c_str(), kContent), 9);
    EXPECT_EQ(WriteWholeFile(nullptr, kContent), 9);
    EXPECT_EQ(folder.NumFiles(), 0);
}

TEST(WriteWholeFile, PassesOverALeftOver) {
    const Folder folder;
    const std::string path = folder.File("words");
    const std::string leftOver = path + ".new0";
    ASSERT_EQ(WriteWholeFile(leftOver.c_str(), {}), 0);
    ASSERT_EQ(WriteWholeFile(path.c_str(), kContent), 0);
    EXPECT_EQ(fs::file_size(leftOver), 0u) << "it may be another program's work";
}

} // namespace
TEST(WriteWholeFile, TakesPathsOfAnyAlphabet) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / u8"tessarin_\u97f3_\u00e4";
    std::filesystem::create_directories(folder);
    const std::filesystem::path file = folder / u8"\u97f3.bin";
    const std::u8string name = file.u8string();
    const std::string path(name.begin(), name.end());
    for (int round = 0; round < 2; ++round) { // a new file, and one that is replaced
        EXPECT_EQ(WriteWholeFile(path.c_str(), std::vector<uint8_t>{1, 2, 3}), kNoError);
        EXPECT_TRUE(std::filesystem::exists(file));
    }
    uint32_t size = 0;
    EXPECT_NE(ReadWholeFile(path.c_str(), &size, false), nullptr);
    EXPECT_EQ(size, 3u);
    std::filesystem::remove_all(folder);
}

} // namespace tessarin
