#include "audio/files/wav_rdr_stream.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/riff_builder.h"
#include "support/temp_file.h"

namespace tessarin {
namespace {

using test::ByteBuilder;
using test::bytes;
using test::PcmFormat;
using test::RiffChunk;
using test::RiffFile;
using test::TempFile;
using testing::ElementsAre;
using testing::ElementsAreArray;

bytes Sequence(size_t length) {
    bytes sequence(length);
    for (size_t i = 0; i < length; ++i) {
        sequence[i] = static_cast<uint8_t>(i);
    }
    return sequence;
}

bytes Wav(const bytes& format, const bytes& data) {
    return RiffFile("WAVE", {RiffChunk("fmt ", format), RiffChunk("data", data)});
}

/// What a reader makes of a file.
struct opened_wav {
    explicit opened_wav(const bytes& content) : file(content, ".wav") {
        code = stream.Open(file.Path());
    }

    /// What one read of `wanted` frames writes to a buffer of `room` bytes, prefilled with 0x55.
    bytes Read(uint32_t wanted, size_t room) {
        bytes buffer(room, 0x55);
        frames = wanted;
        readCode = stream.ReadBlock(buffer.data(), &frames);
        return buffer;
    }

    TempFile file;
    CWavRdrStream stream;
    error_code code;
    error_code readCode = -1;
    uint32_t frames = 0;
};

TEST(WavRdrStream, ReadsPlainPcmWhereverTheChunksStand) {
    const bytes format = PcmFormat(16000, 16, 2);
    const bytes data = Sequence(12);
    const bytes odd = RiffChunk("LIST", Sequence(3)); // and its pad byte
    for (const bytes& content :
         {Wav(format, data),
          RiffFile("WAVE", {odd, RiffChunk("fmt ", format), odd, RiffChunk("data", data), odd})}) {
        opened_wav wav(content);
        ASSERT_EQ(wav.code, 0);
        EXPECT_EQ(wav.stream.GetSampleRate(), 16000u << 16);
        EXPECT_EQ(wav.stream.GetBitsPerSample(), 16);
        EXPECT_EQ(wav.stream.GetNumSamples(), 3u);
        EXPECT_EQ(wav.stream.GetByteLength(), 12u);
        EXPECT_EQ(wav.Read(2, 8), Sequence(8)); // also without Start
        EXPECT_EQ(wav.frames, 2u);
        EXPECT_THAT(wav.Read(2, 6), ElementsAre(8, 9, 10, 11, 0x55, 0x55));
        EXPECT_EQ(wav.frames, 1u);
        wav.Read(2, 8);
        EXPECT_EQ(wav.frames, 0u);
        EXPECT_EQ(wav.readCode, 0);
        EXPECT_EQ(wav.stream.Start(), 0);
        EXPECT_EQ(wav.Read(0xFFFFFFFF, 12), data);
        EXPECT_EQ(wav.frames, 3u);
    }
}

TEST(WavRdrStream, ExtensibleFormatOpensLikePlainPcm) {
    bytes format = PcmFormat(16000, 16, 1, 65534);
    const bytes floatSubFormat = ByteBuilder().U16(22).U16(16).U32(4).U32(3).Take();
    format.insert(format.end(), floatSubFormat.begin(), floatSubFormat.end());
    format.resize(40);
    opened_wav wav(Wav(format, Sequence(4)));
    ASSERT_EQ(wav.code, 0);
    EXPECT_EQ(wav.Read(2, 4), Sequence(4));
}

TEST(WavRdrStream, FormatOf14BytesMeans8Bits) {
    bytes format = PcmFormat(11025, 16, 2);
    format.resize(14);
    opened_wav wav(Wav(format, Sequence(6)));
    ASSERT_EQ(wav.code, 0);
    EXPECT_EQ(wav.stream.GetBitsPerSample(), 8);
    EXPECT_EQ(wav.stream.GetNumSamples(), 3u);
    EXPECT_EQ(wav.Read(3, 6), Sequence(6));
}

TEST(WavRdrStream, AnswersWhatIsWrong) {
    struct broken {
        const char* what;
        bytes content;
        error_code code;
    };
    const bytes data = Sequence(8);
    const bytes pcm = PcmFormat(16000, 16, 1);
    bytes short13 = pcm, short15 = pcm;
    short13.resize(13);
    short15.resize(15);
    const broken cases[] = {
        {"empty file", {}, 12},
        {"no RIFF", ByteBuilder().Text("NIST_1A of another kind").Take(), 12},
        {"another form", RiffFile("AVI ", {RiffChunk("fmt ", pcm), RiffChunk("data", data)}), 12},
        {"no format", RiffFile("WAVE", {RiffChunk("data", data)}), 12},
        {"no data", RiffFile("WAVE", {RiffChunk("fmt ", pcm)}), 12},
        {"data before format", RiffFile("WAVE", {RiffChunk("data", data), RiffChunk("fmt ", pcm)}),
         12},
        {"format of 13 bytes", Wav(short13, data), 12},
        {"format of 15 bytes", Wav(short15, data), 12},
        {"format of 2 GiB",
         RiffFile("WAVE", {RiffChunk("fmt ", pcm, 0x7FFFFFFF), RiffChunk("data", data)}), 12},
        {"ADPCM", Wav(PcmFormat(16000, 4, 1, 17), data), 13},
        {"float", Wav(PcmFormat(16000, 32, 1, 3), data), 13},
        {"32 bits", Wav(PcmFormat(16000, 32, 1), data), 12},
        {"4 bits", Wav(PcmFormat(16000, 4, 1), data), 12},
        {"no bits", Wav(PcmFormat(16000, 0, 1), data), 12},
        {"no channels", Wav(PcmFormat(16000, 16, 0), data), 12},
        {"24 bits of no channels", Wav(PcmFormat(16000, 24, 0), data), 12},
        {"a rate beyond 16.16", Wav(PcmFormat(65536, 16, 1), data), 12},
    };
    for (const broken& b : cases) {
        SCOPED_TRACE(b.what);
        opened_wav wav(b.content);
        EXPECT_EQ(wav.code, b.code);
        wav.Read(2, 8);
        EXPECT_EQ(wav.frames, 0u);
        EXPECT_EQ(wav.stream.Close(), 0);
    }
    EXPECT_EQ(opened_wav(Wav(PcmFormat(65535, 16, 1), data)).code, 0);
}

TEST(WavRdrStream, PresentsMono24BitsAs16) {
    ByteBuilder data;
    data.Bytes(bytes{0xFF, 0xFF, 0x7F, 0x00, 0x00, 0x80, 0x00, 0x10, 0x00});
    opened_wav wav(Wav(PcmFormat(48000, 24, 1), data.Take()));
    ASSERT_EQ(wav.code, 0);
    EXPECT_EQ(wav.stream.GetNumSamples(), 3u);
    EXPECT_EQ(wav.stream.GetByteLength(), 6u);
    EXPECT_EQ(wav.stream.GetBitsPerSample(), 16);
    std::vector<int16_t> samples(4, 0x5555);
    uint32_t frames = 4;
    ASSERT_EQ(wav.stream.ReadBlock(samples.data(), &frames), 0);
    EXPECT_EQ(frames, 3u);
    EXPECT_THAT(samples, ElementsAre(32767, -32767, 15, 0x5555)); // 4096 * 0.0039062 = 15.9998
    frames = 4;
    EXPECT_EQ(wav.stream.ReadBlock(samples.data(), &frames), 0);
    EXPECT_EQ(frames, 0u);

    opened_wav thousand(Wav(PcmFormat(16000, 24, 1), bytes(3000)));
    EXPECT_EQ(thousand.stream.GetNumSamples(), 1000u);
    EXPECT_EQ(thousand.stream.GetByteLength(), 2000u);
}

TEST(WavRdrStream, Stereo24BitsConvertTheFirstHalfOfABlock) {
    ByteBuilder data;
    for (const uint8_t high : bytes{1, 2, 3, 4}) {
        data.U8(0xFF).U8(0xFF).U8(high);
    }
    opened_wav wav(Wav(PcmFormat(48000, 24, 2), data.Take()));
    EXPECT_EQ(wav.stream.GetNumSamples(), 2u);
    EXPECT_EQ(wav.stream.GetByteLength(), 8u);
    const bytes block = wav.Read(2, 8);
    EXPECT_EQ(wav.frames, 2u);
    EXPECT_THAT(block, ElementsAre(0xFF, 1, 0xFF, 2, 0x55, 0x55, 0x55, 0x55));
}

TEST(WavRdrStream, DataBeyondTheEndOfTheFileIsAShortLastBlock) {
    for (const uint16_t bits : {uint16_t{16}, uint16_t{24}}) {
        SCOPED_TRACE(bits);
        const size_t frameSize = bits / 8u;
        ByteBuilder content;
        content.Text("RIFF").U32(0x7FFFFFF0).Text("WAVE");
        content.Bytes(RiffChunk("fmt ", PcmFormat(16000, bits, 1)));
        content.Text("data").U32(0x7FFFFF00).Bytes(Sequence(5 * frameSize + 1));
        opened_wav wav(content.Take());
        ASSERT_EQ(wav.code, 0);
        EXPECT_EQ(wav.stream.GetNumSamples(), 0x7FFFFF00 / frameSize);
        wav.Read(3, 6);
        EXPECT_EQ(wav.frames, 3u);
        wav.Read(3, 6);
        EXPECT_EQ(wav.frames, 2u);
        wav.Read(3, 6);
        EXPECT_EQ(wav.frames, 0u);
        EXPECT_EQ(wav.readCode, 0);
    }
}

TEST(WavRdrStream, FileCutAtAnyByteOpensOrAnswers12) {
    for (const uint16_t bits : {uint16_t{8}, uint16_t{24}}) {
        const bytes whole = RiffFile("WAVE", {RiffChunk("LIST", Sequence(5)),
                                              RiffChunk("fmt ", PcmFormat(16000, bits, 1)),
                                              RiffChunk("data", Sequence(30))});
        const size_t dataStart = whole.size() - 30;
        for (size_t size = 0; size <= whole.size(); ++size) {
            SCOPED_TRACE(testing::Message() << bits << " bits, " << size << " bytes");
            opened_wav wav(bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size)));
            EXPECT_EQ(wav.code, size < dataStart ? 12 : 0);
            wav.Read(100, 200);
            EXPECT_EQ(wav.readCode, 0);
            EXPECT_EQ(wav.frames, size < dataStart ? 0u : (size - dataStart) / (bits / 8u));
        }
    }
}

TEST(WavRdrStream, MultimediaErrorsBecomeCodes) {
    struct mapping {
        int32_t error;
        error_code code;
    };
    for (const mapping& m :
         {mapping{0, 0},    mapping{256, 4}, mapping{257, 4},  mapping{258, 4},  mapping{259, 4},
          mapping{260, 4},  mapping{261, 4}, mapping{262, 11}, mapping{263, 12}, mapping{264, 4},
          mapping{265, 12}, mapping{266, 4}, mapping{267, 10}, mapping{268, 11}, mapping{269, 11},
          mapping{270, 10}, mapping{271, 1}, mapping{272, 12}, mapping{273, 4},  mapping{-1, 4}}) {
        EXPECT_EQ(MapWaveError(m.error), m.code) << m.error;
    }
    CWavRdrStream stream;
    EXPECT_EQ(stream.Open("no-such.wav"), 4);
    EXPECT_EQ(stream.Open("no-such-folder/no-such.wav"), 10);
    EXPECT_EQ(stream.Start(), 4);
    EXPECT_EQ(stream.SetSourceStream(&stream), 6);
    EXPECT_EQ(stream.GetSourceStream(), nullptr);
    EXPECT_STREQ(stream.GetStreamName(), "AudioReader");
}

} // namespace
} // namespace tessarin
