#include "audio/pcm_buffer_stream.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "base/guarded.h"

namespace tessarin {

error_code CPCMBufferStream::Instantiate(const PCMFormat* newFormat) {
    ClearBuffers();
    format = {};
    bytesPerFrame = 0;
    if (newFormat == nullptr || newFormat->channels == 0 ||
        (newFormat->bitsPerSample != 8 && newFormat->bitsPerSample != 16)) {
        return kInvalidArgument;
    }
    format = *newFormat;
    bytesPerFrame = format.bitsPerSample / 8u * format.channels;
    return kNoError;
}

void CPCMBufferStream::ClearBuffers() {
    closed = true;
    buffers.clear();
    firstBegin = 0;
    byteLength = numSamples = bytesRead = 0;
}

error_code CPCMBufferStream::Stop() {
    ClearBuffers();
    return kNoError;
}

error_code CPCMBufferStream::Start() {
    const error_code code = Stop();
    closed = false;
    return code;
}

error_code CPCMBufferStream::AddBuffer(const void* data, int32_t size) {
    if (data == nullptr || size <= 0) {
        return kNoError;
    }
    return Append(NewBlock(data, size));
}

tPCMBuffer CPCMBufferStream::NewBlock(const void* data, int32_t size) {
    const auto bytes = static_cast<size_t>(size);
    tPCMBuffer block{size, std::unique_ptr<uint8_t[]>(new (std::nothrow) uint8_t[bytes])};
    if (block.data != nullptr) {
        std::memcpy(block.data.get(), data, bytes);
    }
    return block;
}

error_code CPCMBufferStream::Append(tPCMBuffer block) {
    const auto size = static_cast<uint32_t>(block.size);
    if (block.data == nullptr || size > std::numeric_limits<uint32_t>::max() - byteLength) {
        return kOutOfMemory;
    }
    const error_code code = Guarded([&] { buffers.push_back(std::move(block)); });
    if (code == kNoError) {
        byteLength += size;
        numSamples += bytesPerFrame == 0 ? 0 : size / bytesPerFrame;
    }
    return code;
}

bool CPCMBufferStream::HoldsFrames(uint32_t frames) const {
    return byteLength >= uint64_t{frames} * bytesPerFrame;
}

// Kept: a frame whose end has not arrived is taken too, and lost; whoever reads more than there is
// pushes whole frames.
error_code CPCMBufferStream::ReadBlock(void* buffer, uint32_t* frames) {
    const uint64_t wanted = uint64_t{*frames} * bytesPerFrame;
    *frames = 0;
    if (!closed && bytesPerFrame != 0) {
        const auto bytes = static_cast<uint32_t>(std::min<uint64_t>(wanted, byteLength));
        TakeBytes(static_cast<uint8_t*>(buffer), bytes);
        *frames = bytes / bytesPerFrame;
    }
    return kNoError;
}

void CPCMBufferStream::TakeBytes(uint8_t* out, uint32_t bytes) {
    bytesRead += bytes;
    byteLength -= bytes;
    while (bytes > 0) {
        const tPCMBuffer& first = buffers.front();
        const uint32_t left = static_cast<uint32_t>(first.size) - firstBegin;
        const uint32_t taken = std::min(left, bytes);
        std::memcpy(out, first.data.get() + firstBegin, taken);
        out += taken;
        bytes -= taken;
        firstBegin += taken;
        numSamples -= std::min(numSamples, taken / bytesPerFrame);
        if (taken == left) {
            buffers.pop_front();
            firstBegin = 0;
        }
    }
    // Blocks that end within a frame give up fewer frames than they were counted for.
    numSamples = std::min(numSamples, byteLength / bytesPerFrame);
}

} // namespace tessarin
