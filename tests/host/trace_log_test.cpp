#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tessarin/tessarin.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string LogPath(const char* name) {
    return (std::filesystem::temp_directory_path() / name).string();
}

std::string Content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(TraceLog, TracesEntriesAndExitsBetweenBanners) {
    const std::string path = LogPath("tessarin_trace.log");
    EXPECT_GT(StartLogging(path.c_str()), 0);
    DestroyAccHMM(nullptr); // a traced destroyer logs even for null
    EndLogging();
    const std::string log = Content(path);
    EXPECT_THAT(log, StartsWith("**** Starting Tessarin SDK Log: "));
    EXPECT_THAT(log, HasSubstr("\n\nEnter: DestroyAccHMM\nLeave: DestroyAccHMM\n"));
    EXPECT_THAT(log, HasSubstr("\n**** Ending Tessarin SDK Log: "));
    EXPECT_THAT(log, EndsWith("\n\n")) << "the time text brings a line end of its own";
    std::remove(path.c_str());
}

TEST(TraceLog, SecondStartEndsTheFirstLogWithoutABanner) {
    const std::string first = LogPath("tessarin_first.log");
    const std::string second = LogPath("tessarin_second.log");
    EXPECT_GT(StartLogging(first.c_str()), 0);
    EXPECT_GT(StartLogging(second.c_str()), 0);
    EndLogging();
    EXPECT_THAT(Content(first), Not(HasSubstr("Ending")));
    EXPECT_THAT(Content(second), HasSubstr("Ending"));
    std::remove(first.c_str());
    std::remove(second.c_str());
}

TEST(TraceLog, UnwritablePathLeavesLoggingOff) {
    EXPECT_EQ(StartLogging("no-such-folder/trace.log"), 0);
    EXPECT_EQ(StartLogging(nullptr), 0);
    DestroyAccHMM(nullptr);
    EndLogging();
}

} // namespace
