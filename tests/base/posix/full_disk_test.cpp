#include "base/whole_file.h"

#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "support/logged_lines.h"
#include "support/posix/process_limit.h"
#include "support/temp_file.h"

namespace tessarin {
namespace {

namespace fs = std::filesystem;

TEST(WriteWholeFile, KeepsTheOldFileWhenTheDiskIsFull) {
    const test::TempFile folder(".folder");
    fs::create_directory(folder.Path());
    const std::string path = std::string(folder.Path()) + "/words";
    const std::vector<uint8_t> old = {'o', 'l', 'd'};
    ASSERT_EQ(WriteWholeFile(path.c_str(), old), 0);
    for (const ptrdiff_t names : {1, 2}) {
        if (names == 2) { // written in place
            fs::create_hard_link(path, path + " again");
        }
        {
            const test::process_limit limit(RLIMIT_FSIZE, 4096);
            EXPECT_EQ(WriteWholeFile(path.c_str(), std::vector<uint8_t>(100000)), 17);
        }
        uint32_t size = 0;
        const auto read = ReadWholeFile(path.c_str(), &size, false);
        EXPECT_EQ(std::vector<uint8_t>(read.get(), read.get() + size), old);
        EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), fs::directory_iterator()),
                  names);
    }
}

TEST(WriteWholeFile, LeavesNoHalfOfANewFile) {
    const test::TempFile folder(".folder");
    fs::create_directory(folder.Path());
    for (const size_t length : {5, 255}) { // the longest name has none beside it
        const std::string path = std::string(folder.Path()) + "/" + std::string(length, 'w');
        const test::process_limit limit(RLIMIT_FSIZE, 4096);
        EXPECT_EQ(WriteWholeFile(path.c_str(), std::vector<uint8_t>(100000)), 17);
        EXPECT_TRUE(fs::is_empty(folder.Path())) << length;
    }
}

TEST(WriteWholeFile, SaysThatOldContentsAreLost) {
    const test::TempFile folder(".folder");
    fs::create_directory(folder.Path());
    const std::string path = std::string(folder.Path()) + "/words";
    ASSERT_EQ(WriteWholeFile(path.c_str(), {}), 0);
    fs::create_hard_link(path, path + " again");    // written in place
    fs::resize_file(path, (uint64_t{1} << 32) + 1); // more than is read as a whole
    const auto lines = test::LoggedLines([&] {
        const test::process_limit limit(RLIMIT_FSIZE, 4096);
        EXPECT_EQ(WriteWholeFile(path.c_str(), std::vector<uint8_t>(100000)), 17);
    });
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find("has lost its old contents"), std::string::npos) << lines[0];
}

TEST(WriteWholeFile, TellsThatADeviceTookNothing) {
    if (!fs::exists("/dev/full")) {
        GTEST_SKIP() << "no device that is always full";
    }
    EXPECT_EQ(WriteWholeFile("/dev/full", std::vector<uint8_t>(100000)), 17);
    EXPECT_EQ(WriteWholeFile("/dev/null", std::vector<uint8_t>(100000)), 0);
}

// Such as /dev/stdout, whose links end in a name that no folder has.
TEST(WriteWholeFile, WritesToThePipeThatALinkLeadsTo) {
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    const std::string path = "/proc/self/fd/" + std::to_string(ends[1]);
    const std::vector<uint8_t> content = {'n', 'e', 'w'};
    if (fs::exists(path)) {
        ASSERT_EQ(WriteWholeFile(path.c_str(), content), 0); // or the read would wait
        std::vector<uint8_t> read(3);
        EXPECT_EQ(::read(ends[0], read.data(), read.size()), 3);
        EXPECT_EQ(read, content);
    }
    close(ends[0]);
    close(ends[1]);
}

TEST(ReadWholeFile, TakesNoPipe) {
    const test::TempFile pipe(".pipe");
    ASSERT_EQ(mkfifo(pipe.Path(), 0600), 0);
    uint32_t size = 0;
    EXPECT_EQ(ReadWholeFile(pipe.Path(), &size, false), nullptr);
    EXPECT_FALSE(FileExists(pipe.Path()));
}

} // namespace
} // namespace tessarin
