#include "frame/whole_file.h"

#include <csignal>
#include <filesystem>
#include <sys/resource.h>
#include <sys/stat.h>
#include <vector>

#include <gtest/gtest.h>

#include "support/temp_file.h"

namespace tessarin {
namespace {

namespace fs = std::filesystem;

/// Lets no file grow beyond a size for the length of a scope, as a full disk does.
class file_size_limit {
public:
    explicit file_size_limit(rlim_t size) {
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limit = {size, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        handler = std::signal(SIGXFSZ, SIG_IGN);
    }
    ~file_size_limit() {
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);
    }

private:
    rlimit before = {};
    void (*handler)(int) = nullptr;
};

TEST(WriteWholeFile, KeepsTheOldFileWhenTheDiskIsFull) {
    const test::TempFile folder(".folder");
    fs::create_directory(folder.Path());
    const std::string path = std::string(folder.Path()) + "/words";
    const std::vector<uint8_t> old = {'o', 'l', 'd'};
    ASSERT_EQ(WriteWholeFile(path.c_str(), old), 0);
    {
        const file_size_limit limit(4096);
        EXPECT_EQ(WriteWholeFile(path.c_str(), std::vector<uint8_t>(100000)), 17);
    }
    EXPECT_EQ(fs::file_size(path), old.size());
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), fs::directory_iterator()), 1);
}

TEST(WriteWholeFile, TellsThatADeviceTookNothing) {
    if (!fs::exists("/dev/full")) {
        GTEST_SKIP() << "no device that is always full";
    }
    EXPECT_EQ(WriteWholeFile("/dev/full", std::vector<uint8_t>(100000)), 17);
    EXPECT_EQ(WriteWholeFile("/dev/null", std::vector<uint8_t>(100000)), 0);
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
