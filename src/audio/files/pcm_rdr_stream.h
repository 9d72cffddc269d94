#pragma once

#include <cstdint>
#include <limits>
#include <memory>

#include "base/ref_counter.h"
#include "tessarin/pcm_stream.h"

namespace tessarin {

/// Base of every PCM stream: readers at the head of a chain and the stages after them, each of
/// which holds a reference to the stage before it. A stream is opened or instantiated once, rewound
/// with `Start` before the first read, read until it delivers 0 frames, and ended with `Stop` or
/// its last `Release`. One thread reads a chain at a time.
///
/// In every read `frames` is the number of sample frames wanted on entry and delivered on return;
/// 0 frames with result 0 are the end, and a failed read leaves 0. Channels count from 1, and 0
/// means all of them, interleaved. Float samples keep the 16-bit range, -32768 to 32767.
///
/// The order of the virtual operations is fixed. Readers add `Open` and `Close` after them,
/// stages `Instantiate`.
class CPCMRdrStream : public CRefCounter {
public:
    /// "AudioReader", "Resample", "PreEmph", "NoiseGateNonRT" or "Buffered": how a place in a
    /// chain is found.
    virtual const char* GetStreamName() = 0;

    virtual error_code GetFormat(PCMFormat* out);
    /// 16.16 fixed point.
    virtual uint32_t GetSampleRate();
    virtual uint16_t GetBitsPerSample();
    virtual uint32_t GetNumSamples();
    virtual uint32_t GetByteLength();

    /// The stage before this one, or null for a reader.
    virtual CPCMRdrStream* GetSourceStream() = 0;
    /// Takes a reference to `stream` in place of the stage before this one. A reader answers 6, and
    /// a stage 2 when it reads all channels and has no room for those of `stream`.
    virtual error_code SetSourceStream(CPCMRdrStream* stream) = 0;

    /// Rewinds the whole chain.
    virtual error_code Start();
    /// Reads interleaved samples in the stream's own format.
    virtual error_code ReadBlock(void* buffer, uint32_t* frames) = 0;
    /// Reads one channel in the stream's own sample width. On a multi-channel stream this serves
    /// the first read of a block size only; see the implementation.
    virtual error_code ReadChannel(void* buffer, uint32_t* frames, uint32_t channel);
    /// ReadChannel with 8-bit samples widened to 16 bits. The buffer is zeroed by the caller.
    virtual error_code ReadChannelInt16(int16_t* buffer, uint32_t* frames, uint32_t channel);
    /// Reads one channel, or all for channel 0, as floats.
    virtual error_code ReadChannelFloat(float* buffer, uint32_t* frames, uint32_t channel);
    virtual error_code Stop();

    /// How many of the GetNumSamples sample frames there are to be read: a file may end long before
    /// the length that its header claims. What takes memory or time by length goes by this one.
    uint32_t GetHeldSamples();

protected:
    /// Whether a read of `channel` of `stream` gives at most `most` samples for a frame.
    static bool FitsInto(uint32_t most, CPCMRdrStream& stream, uint32_t channel);

    PCMFormat format{};
    uint32_t byteLength = 0;    ///< of the audio as the stream presents it
    uint32_t numSamples = 0;    ///< sample frames
    uint32_t bytesPerFrame = 0; ///< a stream that has none yet delivers nothing
    uint32_t heldSamples = std::numeric_limits<uint32_t>::max(); ///< that a reader's file has

private:
    /// Has `scratch` hold `frames` frames. Returns 0, or 1 without memory.
    error_code GrowScratch(uint32_t frames);

    std::unique_ptr<uint8_t[]> scratch; ///< zeroed when it is allocated; never shrinks
    int32_t scratchSize = 0;
};

} // namespace tessarin
