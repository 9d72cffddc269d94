#include "audio/win32_pcm_buffer_stream.h"

#include <utility>

namespace tessarin {

namespace {

constexpr uint32_t kWaitMs = 100;

} // namespace

CWin32PCMBufferStream::~CWin32PCMBufferStream() {
    CWin32PCMBufferStream::CloseStream();
}

error_code CWin32PCMBufferStream::GetFormat(PCMFormat* out) {
    const crit_section_scope scope(section);
    return CPCMBufferStream::GetFormat(out);
}

uint32_t CWin32PCMBufferStream::GetNumSamples() {
    const crit_section_scope scope(section);
    return CPCMBufferStream::GetNumSamples();
}

uint32_t CWin32PCMBufferStream::GetByteLength() {
    const crit_section_scope scope(section);
    return CPCMBufferStream::GetByteLength();
}

uint32_t CWin32PCMBufferStream::GetBytesRead() {
    const crit_section_scope scope(section);
    return CPCMBufferStream::GetBytesRead();
}

error_code CWin32PCMBufferStream::Start() {
    const crit_section_scope scope(section);
    return CPCMBufferStream::Start();
}

error_code CWin32PCMBufferStream::ReadBlock(void* buffer, uint32_t* frames) {
    const crit_section_scope scope(section);
    while (blocking && !IsClosed() && !HoldsFrames(*frames)) {
        arrival.Wait(section, kWaitMs);
    }
    return CPCMBufferStream::ReadBlock(buffer, frames);
}

error_code CWin32PCMBufferStream::Stop() {
    CloseStream();
    return kNoError;
}

error_code CWin32PCMBufferStream::Instantiate(const PCMFormat* newFormat) {
    CloseStream();
    const crit_section_scope scope(section);
    return CPCMBufferStream::Instantiate(newFormat);
}

void CWin32PCMBufferStream::ClearBuffers() {
    const crit_section_scope scope(section);
    CPCMBufferStream::ClearBuffers();
}

error_code CWin32PCMBufferStream::AddBuffer(const void* data, int32_t size) {
    if (data == nullptr || size <= 0) {
        return kNoError;
    }
    tPCMBuffer block = NewBlock(data, size);
    const crit_section_scope scope(section);
    if (IsClosed()) {
        return kNoError;
    }
    const error_code code = Append(std::move(block));
    if (blocking) {
        arrival.Set();
    }
    return code;
}

void CWin32PCMBufferStream::CloseStream() {
    const crit_section_scope scope(section);
    CPCMBufferStream::ClearBuffers();
    arrival.Set();
}

} // namespace tessarin
