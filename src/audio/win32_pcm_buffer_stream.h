#pragma once

#include <cstdint>

#include "audio/pcm_buffer_stream.h"
#include "base/crit_section.h"
#include "base/thread_event.h"

namespace tessarin {

/// A buffer stream between two threads: one pushes, one reads. The lock is held for the copy of
/// what is read, and while a block that is already copied is put in its place.
class CWin32PCMBufferStream : public CPCMBufferStream {
public:
    /// A blocking stream lets a read wait for all the frames that it asks for, or for the end.
    explicit CWin32PCMBufferStream(bool isBlocking) : blocking(isBlocking) {}
    ~CWin32PCMBufferStream() override;

    error_code GetFormat(PCMFormat* out) override;
    uint32_t GetNumSamples() override;
    uint32_t GetByteLength() override;
    error_code Start() override;
    /// A blocking read waits until the stream holds `*frames` frames or is closed. What is left
    /// when it is closed is lost.
    error_code ReadBlock(void* buffer, uint32_t* frames) override;
    /// CloseStream.
    error_code Stop() override;
    error_code Instantiate(const PCMFormat* newFormat) override;
    void ClearBuffers() override;
    /// Kept: unlike the plain stream a closed one ignores what is pushed, with 0: whoever pushes
    /// need not know whether anybody listens.
    error_code AddBuffer(const void* data, int32_t size) override;
    uint32_t GetBytesRead() override;

    /// Closes and empties the stream, and wakes the reader.
    virtual void CloseStream();

private:
    CCritSection section;
    CThreadEvent arrival; ///< a block, or the end
    CThreadEvent unused;  ///< Kept: part of the object's layout
    const bool blocking;
};

} // namespace tessarin
