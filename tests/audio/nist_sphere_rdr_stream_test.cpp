#include "audio/files/nist_sphere_rdr_stream.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sphere_builder.h"
#include "support/temp_file.h"

namespace tessarin {
namespace {

using test::ByteBuilder;
using test::bytes;
using test::SphereFile;
using test::TempFile;
using testing::ElementsAre;

PCMFormat FormatOf(CPCMRdrStream& stream) {
    PCMFormat format{};
    stream.GetFormat(&format);
    return format;
}

TEST(SphereHeaderInt, FindsTheNumberBehindTheTypeLetter) {
    struct header {
        const char* text;
        int32_t value;
    };
    for (const header& h :
         {header{"sample_count -i 320\n", 320}, header{"sample_count -i320", 320},
          header{"x\nsample_count   -i\t -7 tail", -7},
          header{"my_sample_count_2 -i 5", 5}, // any mention of the key
          header{"sample_count -s5 8000", 99}, header{"sample_count -r 3", 99},
          header{"sample_count", 99}, header{"sample_count -", 99}, header{"sample_coun -i 3", 99},
          header{"", 99}, header{"sample_count -i", 0}, header{"sample_count x\nother -i 12", 12},
          header{"sample_count -s1 a\nsample_count -i 4", 99},
          header{"sample_count -i 99999999999999999999", 2147483647},
          header{"sample_count -i -99999999999", -2147483647 - 1}}) {
        EXPECT_EQ(GetHeaderInt(h.text, "sample_count", 99), h.value) << h.text;
    }
}

TEST(NistSphereRdrStream, PresentsWhatTheHeaderSays) {
    struct header {
        const char* text;
        uint32_t rate;
        uint16_t bits, channels;
        uint32_t frames;
    };
    for (const header& h :
         {header{"sample_count -i 3\nsample_rate -i 8000\nchannel_count -i 2\n"
                 "sample_n_bytes -i 1\nend_head\n",
                 8000, 8, 2, 3},
          header{"sample_n_bytes -i 4\n", 16000, 16, 1, 2}, // 2 is the count of none
          header{"sample_rate -s5 8000\nsample_count -i 10", 16000, 16, 1, 10},
          header{"channel_count -i 3\nsample_count -i 0", 16000, 16, 1, 0},
          header{"channel_count -i 0\nsample_rate -i 50000", 50000, 16, 1, 2},
          header{"sample_count -i -1\n", 16000, 16, 1, 0xFFFFFFFF},
          header{"sample_coding -s4 ulaw\nsample_byte_format -s2 10", 16000, 16, 1, 2}}) {
        SCOPED_TRACE(h.text);
        const TempFile file(SphereFile(h.text, {}), ".sph");
        CNistSphereRdrStream stream;
        ASSERT_EQ(stream.Open(file.Path()), 0);
        EXPECT_EQ(stream.GetSampleRate(), h.rate << 16);
        EXPECT_EQ(stream.GetBitsPerSample(), h.bits);
        EXPECT_EQ(FormatOf(stream).channels, h.channels);
        EXPECT_EQ(stream.GetNumSamples(), h.frames);
        EXPECT_EQ(stream.GetByteLength(), h.bits / 8 * h.channels * h.frames);
    }
}

TEST(NistSphereRdrStream, ReadsFromBehindTheHeaderToTheStatedCount) {
    const bytes data = ByteBuilder().U16(1).U16(2).U16(3).U16(4).U16(5).Take();
    const TempFile file(SphereFile("sample_count -i 4\n", data), ".sph");
    CNistSphereRdrStream stream;
    ASSERT_EQ(stream.Open(file.Path()), 0);
    for (int pass = 0; pass < 2; ++pass) {
        ASSERT_EQ(stream.Start(), 0);
        std::vector<int16_t> samples(3);
        uint32_t frames = 3;
        ASSERT_EQ(stream.ReadBlock(samples.data(), &frames), 0);
        EXPECT_THAT(samples, ElementsAre(1, 2, 3));
        ASSERT_EQ(stream.ReadBlock(samples.data(), &frames), 0);
        EXPECT_EQ(frames, 1u);
        EXPECT_EQ(samples[0], 4);
        EXPECT_EQ(stream.ReadBlock(samples.data(), &frames), 0);
        EXPECT_EQ(frames, 0u);
    }
}

TEST(NistSphereRdrStream, AnswersWhatIsWrong) {
    struct broken {
        const char* what;
        std::string content;
    };
    const std::string rest(1100, ' ');
    for (const broken& b :
         {broken{"empty", ""}, broken{"another magic", "NIST_1B\n   1024\n" + rest},
          broken{"size below its own place", "NIST_1A\n     15\n" + rest},
          broken{"negative size", "NIST_1A\n  -1024\n" + rest},
          broken{"no number", "NIST_1A\n  many \n" + rest},
          broken{"above 1 MiB", "NIST_1A\n1048577 " + std::string(1100000, ' ')},
          broken{"longer than the file", "NIST_1A\n   2000\n" + rest},
          broken{"rate beyond 16.16", "NIST_1A\n   1024\nsample_rate -i 65536" + rest},
          broken{"negative rate", "NIST_1A\n   1024\nsample_rate -i -1" + rest}}) {
        SCOPED_TRACE(b.what);
        const TempFile file(ByteBuilder().Text(b.content).Take(), ".sph");
        CNistSphereRdrStream stream;
        EXPECT_EQ(stream.Open(file.Path()), 12);
        uint32_t frames = 1;
        EXPECT_EQ(stream.ReadBlock(nullptr, &frames), 0);
        EXPECT_EQ(frames, 0u);
        EXPECT_EQ(stream.Start(), 12);
    }
    CNistSphereRdrStream stream;
    EXPECT_EQ(stream.Open("no-such-folder/no-such.sph"), 10);
    EXPECT_EQ(stream.SetSourceStream(&stream), 6);
}

TEST(NistSphereRdrStream, FileCutAtAnyByteOpensOrAnswers12) {
    const bytes whole = SphereFile("sample_count -i 10\nend_head\n", bytes(20, 7), 64);
    for (size_t size = 0; size <= whole.size(); ++size) {
        SCOPED_TRACE(size);
        const TempFile file(bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size)),
                            ".sph");
        CNistSphereRdrStream stream;
        EXPECT_EQ(stream.Open(file.Path()), size < 64 ? 12 : 0);
        std::vector<int16_t> samples(20);
        uint32_t frames = 20;
        EXPECT_EQ(stream.ReadBlock(samples.data(), &frames), 0);
        EXPECT_EQ(frames, size < 64 ? 0 : (size - 64) / 2);
    }
}

} // namespace
} // namespace tessarin
