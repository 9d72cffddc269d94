#include "audio/pcm_buffer_stream.h"

#include <atomic>
#include <chrono>
#include <limits>
#include <numeric>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "audio/win32_pcm_buffer_stream.h"
#include "memory_stream.h"

namespace tessarin {
namespace {

using test::bytes;
using test::Format;
using test::Int16Bytes;
using testing::ElementsAre;
using testing::IsEmpty;

/// Opens `stream` for 16-bit mono at 16 kHz.
void Open(CPCMBufferStream& stream) {
    const PCMFormat format = Format(16000, 16, 1);
    ASSERT_EQ(stream.Instantiate(&format), 0);
    ASSERT_EQ(stream.Start(), 0);
}

error_code Push(CPCMBufferStream& stream, const bytes& data) {
    return stream.AddBuffer(data.data(), static_cast<int32_t>(data.size()));
}

std::vector<int16_t> Read(CPCMBufferStream& stream, uint32_t frames) {
    std::vector<int16_t> samples(frames);
    EXPECT_EQ(stream.ReadBlock(samples.data(), &frames), 0);
    samples.resize(frames);
    return samples;
}

TEST(PcmBufferStream, LeavesWhatIsNotReadToTheNextRead) {
    CPCMBufferStream stream;
    Open(stream);
    EXPECT_THAT(Read(stream, 4), IsEmpty());
    Push(stream, Int16Bytes({1, 2, 3}));
    Push(stream, Int16Bytes({4, 5}));
    EXPECT_EQ(stream.GetNumSamples(), 5u);
    EXPECT_EQ(stream.GetByteLength(), 10u);
    EXPECT_THAT(Read(stream, 2), ElementsAre(1, 2));
    EXPECT_EQ(stream.GetNumSamples(), 3u); // Kept: what is buffered, not what ever came
    EXPECT_THAT(Read(stream, 2), ElementsAre(3, 4));
    EXPECT_THAT(Read(stream, 9), ElementsAre(5));
    EXPECT_EQ(stream.GetNumSamples(), 0u);
    EXPECT_EQ(stream.GetBytesRead(), 10u);
}

TEST(PcmBufferStream, ReadsTheSameHoweverTheBytesAreCut) {
    std::vector<int16_t> samples(100);
    std::iota(samples.begin(), samples.end(), int16_t{-50});
    const bytes all = Int16Bytes(samples);
    for (const size_t step : {1u, 3u, 7u, 64u}) {
        SCOPED_TRACE(step);
        CWin32PCMBufferStream stream(true); // waits for bytes, so odd blocks must wake it too
        Open(stream);
        for (size_t i = 0; i < all.size(); i += step) {
            const size_t count = std::min(step, all.size() - i);
            ASSERT_EQ(Push(stream, {all.begin() + static_cast<std::ptrdiff_t>(i),
                                    all.begin() + static_cast<std::ptrdiff_t>(i + count)}),
                      0);
        }
        std::vector<int16_t> read;
        for (const uint32_t count : {1u, 2u, 30u, 67u}) {
            const std::vector<int16_t> part = Read(stream, count);
            read.insert(read.end(), part.begin(), part.end());
        }
        EXPECT_EQ(read, samples);
        EXPECT_EQ(stream.GetNumSamples(), 0u); // never below, though blocks are counted apart
        EXPECT_EQ(stream.GetByteLength(), 0u);
    }
}

TEST(PcmBufferStream, CountsWholeFramesOfABlockAndTakesTheRestWithARead) {
    CPCMBufferStream stream;
    Open(stream);
    Push(stream, {1, 0, 2});
    EXPECT_EQ(stream.GetNumSamples(), 1u);
    EXPECT_EQ(stream.GetByteLength(), 3u);
    EXPECT_THAT(Read(stream, 2), ElementsAre(1));
    EXPECT_EQ(stream.GetByteLength(), 0u); // Kept: the half sample is gone
    EXPECT_EQ(stream.GetBytesRead(), 3u);
    EXPECT_EQ(stream.AddBuffer(nullptr, 4), 0);
    EXPECT_EQ(Push(stream, {}), 0);
    const int16_t sample = 7;
    EXPECT_EQ(stream.AddBuffer(&sample, -2), 0);
    EXPECT_EQ(stream.GetByteLength(), 0u);
}

TEST(PcmBufferStream, StartEmptiesIt) {
    CPCMBufferStream stream;
    const PCMFormat format = Format(8000, 16, 1);
    ASSERT_EQ(stream.Instantiate(&format), 0);
    Push(stream, Int16Bytes({1})); // Kept: taken while closed
    EXPECT_EQ(stream.GetNumSamples(), 1u);
    EXPECT_THAT(Read(stream, 1), IsEmpty());
    stream.Start();
    EXPECT_EQ(stream.GetNumSamples(), 0u);
    Push(stream, Int16Bytes({2, 3}));
    Read(stream, 1);
    stream.Start();
    EXPECT_EQ(stream.GetBytesRead(), 0u);
    EXPECT_THAT(Read(stream, 1), IsEmpty());
    EXPECT_STREQ(stream.GetStreamName(), "Buffered");
}

TEST(PcmBufferStream, RefusesFormatsWithoutWholeSamples) {
    CPCMBufferStream stream;
    for (const PCMFormat& format :
         {Format(16000, 4, 1), Format(16000, 24, 1), Format(16000, 16, 0)}) {
        EXPECT_EQ(stream.Instantiate(&format), kInvalidArgument);
        stream.Start();
        EXPECT_EQ(Push(stream, {1, 2, 3, 4}), 0);
        EXPECT_THAT(Read(stream, 1), IsEmpty());
    }
    EXPECT_EQ(stream.Instantiate(nullptr), kInvalidArgument);
}

/// A stream that believes it has been read for a day, or holds almost all that it can.
class AgedStream final : public CPCMBufferStream {
public:
    AgedStream(uint32_t read, uint32_t held) {
        Open(*this);
        bytesRead = read;
        byteLength = held;
    }
};

TEST(PcmBufferStream, CountersMeetTheirLimitsInOrder) {
    constexpr uint32_t kMost = std::numeric_limits<uint32_t>::max();
    AgedStream read(kMost - 1, 0);
    Push(read, Int16Bytes({1, 2}));
    EXPECT_THAT(Read(read, 2), ElementsAre(1, 2));
    EXPECT_EQ(read.GetBytesRead(), 2u); // modulo 2^32
    AgedStream full(0, kMost - 3);
    EXPECT_EQ(Push(full, Int16Bytes({1, 2})), kOutOfMemory);
    EXPECT_EQ(full.GetByteLength(), kMost - 3);
    EXPECT_EQ(Push(full, {1, 2, 3}), 0);
    EXPECT_EQ(full.GetByteLength(), kMost);
}

TEST(Win32PcmBufferStream, IgnoresWhatComesWhileClosed) {
    CWin32PCMBufferStream stream(false);
    const PCMFormat format = Format(16000, 16, 1);
    ASSERT_EQ(stream.Instantiate(&format), 0);
    EXPECT_EQ(Push(stream, Int16Bytes({1})), 0);
    EXPECT_EQ(stream.GetByteLength(), 0u);
    stream.Start();
    Push(stream, Int16Bytes({2, 3}));
    EXPECT_THAT(Read(stream, 5), ElementsAre(2, 3)); // without waiting for more
    stream.Stop();
    Push(stream, Int16Bytes({4}));
    EXPECT_EQ(stream.GetByteLength(), 0u);
}

TEST(Win32PcmBufferStream, BlockedReadGetsAllItsFramesFromAnotherThread) {
    CWin32PCMBufferStream stream(true);
    Open(stream);
    std::thread producer([&] {
        for (int16_t i = 0; i < 1000; ++i) {
            Push(stream, Int16Bytes({i}));
        }
    });
    for (int16_t i = 0; i < 1000; i = static_cast<int16_t>(i + 100)) {
        const std::vector<int16_t> part = Read(stream, 100);
        ASSERT_EQ(part.size(), 100u);
        EXPECT_EQ(part.front(), i);
        EXPECT_EQ(part.back(), i + 99);
    }
    producer.join();
}

TEST(Win32PcmBufferStream, CloseReleasesABlockedReader) {
    using clock = std::chrono::steady_clock;
    CWin32PCMBufferStream stream(true);
    Open(stream);
    Push(stream, Int16Bytes({1, 2, 3}));
    std::atomic<bool> isReading = false;
    std::thread reader([&] {
        isReading = true;
        EXPECT_THAT(Read(stream, 4), IsEmpty()); // what had come is gone with the close
    });
    while (!isReading) {
        std::this_thread::yield();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const auto closed = clock::now();
    stream.CloseStream();
    reader.join();
    EXPECT_LT(clock::now() - closed, std::chrono::seconds(2));
}

} // namespace
} // namespace tessarin
