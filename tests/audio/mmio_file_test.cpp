#include "audio/files/mmio_file.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>

#include "support/riff_builder.h"
#include "support/signals.h"
#include "support/temp_file.h"

namespace tessarin {

namespace {

using test::bytes;
using test::PcmFormat;
using test::RiffChunk;
using test::RiffFile;
using test::TempFile;

constexpr uint32_t kUnknownSize = 0xFFFFFFFF;

/// What a reader of WAV files meets: the code of each step up to the first that fails.
struct walk {
    int32_t form = -1;
    int32_t format = -1;
    int32_t ascend = -1;
    int32_t data = -1;
    uint32_t formatSize = 0;
    uint32_t dataSize = 0;
    int64_t dataStart = 0;
    std::string content; ///< of the data, as far as the file has it
};

walk Walk(const bytes& content) {
    const TempFile file(content, ".wav");
    walk seen;
    MmioFile riff;
    EXPECT_EQ(riff.Open(file.Path()), kMmioNoError);
    mmio_chunk whole;
    mmio_chunk format;
    mmio_chunk data;
    if ((seen.form = riff.DescendForm(FourCC("WAVE"), &whole)) != kMmioNoError ||
        (seen.format = riff.DescendChunk(FourCC("fmt "), whole, &format)) != kMmioNoError) {
        return seen;
    }
    seen.formatSize = format.size;
    if ((seen.ascend = riff.Ascend(format)) != kMmioNoError ||
        (seen.data = riff.DescendChunk(FourCC("data"), whole, &data)) != kMmioNoError) {
        return seen;
    }
    seen.dataSize = data.size;
    seen.dataStart = riff.Tell();
    EXPECT_EQ(seen.dataStart, data.dataStart);
    seen.content.resize(std::min<size_t>(data.size, 1000));
    const int64_t got = riff.Read(seen.content.data(), seen.content.size());
    EXPECT_GE(got, 0);
    seen.content.resize(static_cast<size_t>(got));
    return seen;
}

bytes Letters(std::string_view text) {
    return {text.begin(), text.end()};
}

bytes FormatChunk() {
    return RiffChunk("fmt ", PcmFormat(16000, 16, 1));
}

TEST(MmioFile, FindsChunksByNameAtAnyPlace) {
    const bytes odd = RiffChunk("LIST", Letters("odd"));
    const walk seen =
        Walk(RiffFile("WAVE", {odd, FormatChunk(), odd, RiffChunk("data", Letters("12345"))}));
    EXPECT_EQ(seen.formatSize, 16u);
    EXPECT_EQ(seen.data, kMmioNoError);
    EXPECT_EQ(seen.dataSize, 5u);
    EXPECT_EQ(seen.content, "12345");
}

TEST(MmioFile, FindsTheFormBehindOtherChunks) {
    bytes file = RiffFile("AVI ", {FormatChunk(), RiffChunk("data", Letters("wrong"))});
    const bytes junk = RiffChunk("junk", Letters("abc"));
    const bytes wave = RiffFile("WAVE", {FormatChunk(), RiffChunk("data", Letters("right"))});
    file.insert(file.end(), junk.begin(), junk.end());
    file.insert(file.end(), wave.begin(), wave.end());
    EXPECT_EQ(Walk(file).content, "right");
}

TEST(MmioFile, DoesNotLookBeyondTheParent) {
    bytes file = RiffFile("WAVE", {FormatChunk()});
    const bytes stray = RiffChunk("data", Letters("stray"));
    file.insert(file.end(), stray.begin(), stray.end());
    EXPECT_EQ(Walk(file).data, kMmioChunkNotFound);
}

TEST(MmioFile, UnknownSizesReachToTheEndOfTheFile) {
    for (const uint32_t unknown : {0u, kUnknownSize}) {
        SCOPED_TRACE(unknown);
        bytes file =
            RiffFile("WAVE", {FormatChunk(), RiffChunk("data", Letters("123456"), unknown)});
        EXPECT_EQ(Walk(file).dataSize, unknown == 0 ? 0u : 6u) << "the whole has a stated size";
        StoreLittleEndian(file.data() + 4, unknown);
        EXPECT_EQ(Walk(file).content, "123456");
    }
    const bytes empty =
        RiffFile("WAVE", {FormatChunk(), RiffChunk("data", {}), RiffChunk("LIST", Letters("no"))});
    EXPECT_EQ(Walk(empty).dataSize, 0u) << "what follows is not sound";
    EXPECT_EQ(Walk(RiffFile("WAVE", {RiffChunk("fmt ", {}, kUnknownSize)})).ascend, kMmioNoError)
        << "of the other chunks every size is believed";
}

TEST(MmioFile, AFileCutAtAnyByteGivesACodeOrWhatIsLeft) {
    const bytes whole = RiffFile("WAVE", {FormatChunk(), RiffChunk("data", Letters("1234"))});
    const size_t dataStart = whole.size() - 4;
    for (size_t length = 0; length < whole.size(); ++length) {
        SCOPED_TRACE(length);
        const walk seen =
            Walk(bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length)));
        EXPECT_EQ(seen.data == kMmioNoError, length >= dataStart);
        EXPECT_EQ(seen.content,
                  std::string("1234").substr(0, length - std::min(length, dataStart)));
    }
}

TEST(MmioFile, SpoiltHeadersEndInACode) {
    const bytes whole = RiffFile("WAVE", {RiffChunk("LIST", Letters("odd")), FormatChunk(),
                                          RiffChunk("data", Letters("12345678"))});
    test::Noise noise(1);
    for (size_t place = 0; place + 4 <= whole.size(); ++place) {
        for (const uint32_t value :
             {0u, 1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu, kUnknownSize, noise.NextU32()}) {
            bytes spoilt = whole;
            StoreLittleEndian(spoilt.data() + place, value);
            const walk seen = Walk(spoilt);
            for (const int32_t code : {seen.form, seen.format, seen.ascend, seen.data}) {
                EXPECT_TRUE(code == -1 || code == kMmioNoError || code == kMmioChunkNotFound)
                    << code << " for " << value << " at " << place;
            }
        }
    }
}

// Eight zeros read as an empty chunk without a name.
TEST(MmioFile, ZerosAreWalkedOnlySoFar) {
    const auto afterZeros = [](size_t numZeros) {
        bytes content = RiffFile("WAVE", {bytes(numZeros), FormatChunk()});
        content[4] = content[5] = content[6] = content[7] = 0xFF; // the whole has no known size
        return Walk(content).format;
    };
    EXPECT_EQ(afterZeros(4096), kMmioNoError);
    EXPECT_EQ(afterZeros(1 << 20), kMmioChunkNotFound);
}

} // namespace

} // namespace tessarin
