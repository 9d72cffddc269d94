#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "audio/files/pcm_rdr_stream.h"
#include "base/counted_ptr.h"
#include "support/byte_builder.h"

namespace tessarin::test {

/// A reader of bytes in memory that can be made to fail.
class MemoryStream : public CPCMRdrStream {
public:
    MemoryStream(PCMFormat pcmFormat, bytes samples) : content(std::move(samples)) {
        format = pcmFormat;
        bytesPerFrame = format.bitsPerSample / 8u * format.channels;
        byteLength = static_cast<uint32_t>(content.size());
        numSamples = bytesPerFrame == 0 ? 0 : byteLength / bytesPerFrame;
    }
    ~MemoryStream() override {
        if (isGone != nullptr) {
            *isGone = true;
        }
    }

    const char* GetStreamName() override { return "AudioReader"; }
    CPCMRdrStream* GetSourceStream() override { return nullptr; }
    error_code SetSourceStream(CPCMRdrStream*) override { return kNotAvailable; }
    error_code Start() override {
        position = 0;
        return kNoError;
    }
    error_code ReadBlock(void* buffer, uint32_t* frames) override {
        ++reads;
        if (readsUntilFailure-- == 0) {
            return kInvalidFile;
        }
        const size_t size =
            std::min<size_t>(size_t{*frames} * bytesPerFrame, content.size() - position);
        std::copy_n(content.data() + position, size, static_cast<uint8_t*>(buffer));
        position += size;
        *frames = static_cast<uint32_t>(size / bytesPerFrame);
        return kNoError;
    }

    int32_t reads = 0;
    int32_t readsUntilFailure = -1;
    bool* isGone = nullptr;

private:
    bytes content;
    size_t position = 0;
};

inline bytes Int16Bytes(const std::vector<int16_t>& samples) {
    ByteBuilder content;
    for (const int16_t sample : samples) {
        content.U16(static_cast<uint16_t>(sample));
    }
    return content.Take();
}

inline PCMFormat Format(uint32_t rateHz, uint16_t bits, uint16_t channels) {
    return {rateHz << 16, bits, channels};
}

/// A mono stream of 16-bit samples, with one reference for the caller.
inline counted_ptr<MemoryStream> MonoStream(uint32_t rateHz, const std::vector<int16_t>& samples) {
    return counted_ptr<MemoryStream>::Adopt(
        new MemoryStream(Format(rateHz, 16, 1), Int16Bytes(samples)));
}

/// All that is left in `stream` of one channel, read in blocks.
inline std::vector<float> ReadAllFloats(CPCMRdrStream& stream, uint32_t blockSize,
                                        uint32_t channel = 1) {
    std::vector<float> all;
    std::vector<float> block(blockSize);
    for (;;) {
        uint32_t frames = blockSize;
        if (stream.ReadChannelFloat(block.data(), &frames, channel) != kNoError || frames == 0) {
            return all;
        }
        all.insert(all.end(), block.begin(), block.begin() + frames);
    }
}

} // namespace tessarin::test
