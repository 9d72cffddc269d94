#pragma once

#include <cstdint>
#include <deque>
#include <memory>

#include "audio/files/pcm_rdr_stream.h"

namespace tessarin {

/// A block of audio as it was pushed.
struct tPCMBuffer {
    int32_t size; ///< bytes
    std::unique_ptr<uint8_t[]> data;
};

/// Head of a chain for audio that arrives in pieces: bytes are pushed at one end and read at the
/// other, on one thread. It has no end; an empty stream delivers 0 frames. May be a member of
/// another object: its count starts at 1.
///
/// Kept: byte length and number of samples are what is buffered now, so that later stages see
/// how far they can read. A block counts its whole frames only.
class CPCMBufferStream : public CPCMRdrStream {
public:
    const char* GetStreamName() override { return "Buffered"; }
    CPCMRdrStream* GetSourceStream() override { return nullptr; }
    error_code SetSourceStream(CPCMRdrStream*) override { return kNotAvailable; }
    /// Empties and opens the stream.
    error_code Start() override;
    /// A closed stream delivers no frame.
    error_code ReadBlock(void* buffer, uint32_t* frames) override;
    /// Empties and closes the stream.
    error_code Stop() override;

    /// Empties the stream and sets its format; it stays closed until Start. Returns 0, or 2 for a
    /// format without a whole number of bytes, after which the stream delivers nothing.
    virtual error_code Instantiate(const PCMFormat* newFormat);
    /// Empties and closes the stream.
    virtual void ClearBuffers();
    /// Copies `size` bytes; none and a null `data` are not a block. Returns 0, or 1 without memory
    /// or when more than 4 GiB would wait. Kept: a closed stream takes them too, and forgets them
    /// at Start.
    virtual error_code AddBuffer(const void* data, int32_t size);
    /// Since Start, modulo 2^32.
    virtual uint32_t GetBytesRead() { return bytesRead; }

protected:
    /// A block with a copy of the bytes; without memory its `data` is null.
    static tPCMBuffer NewBlock(const void* data, int32_t size);
    error_code Append(tPCMBuffer block);
    bool HoldsFrames(uint32_t frames) const;
    bool IsClosed() const { return closed; }

    uint32_t bytesRead = 0;

private:
    void TakeBytes(uint8_t* out, uint32_t count);

    std::deque<tPCMBuffer> buffers;
    uint32_t firstBegin = 0; ///< what is left of the first block begins here
    bool closed = true;
};

} // namespace tessarin
