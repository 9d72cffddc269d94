#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>

#include "audio/files/mmio_file.h"
#include "support/byte_builder.h"
#include "support/temp_file.h"

namespace tessarin {

namespace {

using test::TempFile;

int32_t OpenError(const std::string& path) {
    return MmioFile().Open(path.c_str());
}

TEST(MmioFile, TellsWhyAFileDoesNotOpen) {
    const TempFile plain(std::span<const uint8_t>(), ".wav");
    const TempFile absent;
    const std::string folder = std::filesystem::path(plain.Path()).parent_path().string();
    EXPECT_EQ(OpenError(absent.Path()), kMmioFileNotFound);
    EXPECT_EQ(OpenError(""), kMmioFileNotFound);
    EXPECT_EQ(MmioFile().Open(nullptr), kMmioFileNotFound);
    EXPECT_EQ(OpenError(std::string(plain.Path()) + "/inside"), kMmioPathNotFound);
    EXPECT_EQ(OpenError(std::string(absent.Path()) + "/inside"), kMmioPathNotFound);
    EXPECT_EQ(OpenError(folder), kMmioAccessDenied);
    EXPECT_EQ(OpenError(std::string(100000, 'x')), kMmioCannotOpen);
}

TEST(MmioFile, TellsWhenTooManyFilesAreOpen) {
    const TempFile plain(std::span<const uint8_t>(), ".wav");
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const int32_t error = OpenError(plain.Path());
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(error, kMmioTooManyOpenFiles);
}

TEST(MmioFile, DoesNotWaitForWhatHasNoEndOrNoBeginning) {
    const TempFile pipe;
    ASSERT_EQ(mkfifo(pipe.Path(), 0600), 0);
    for (const char* path : {pipe.Path(), "/dev/zero"}) {
        SCOPED_TRACE(path);
        MmioFile file;
        mmio_chunk riff;
        ASSERT_EQ(file.Open(path), kMmioNoError);
        EXPECT_NE(file.DescendForm(FourCC("WAVE"), &riff), kMmioNoError);
    }
}

TEST(MmioFile, DoesNotWalkASparseFileToItsEnd) {
    const TempFile sparse(test::bytes(1), ".wav");
    std::filesystem::resize_file(sparse.Path(), uintmax_t{1} << 36);
    MmioFile riff;
    mmio_chunk whole;
    ASSERT_EQ(riff.Open(sparse.Path()), kMmioNoError);
    EXPECT_EQ(riff.DescendForm(FourCC("WAVE"), &whole), kMmioChunkNotFound);
    EXPECT_LT(riff.Tell(), 1 << 20);
}

} // namespace

} // namespace tessarin
