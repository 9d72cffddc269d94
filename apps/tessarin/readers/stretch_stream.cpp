#include "apps/tessarin/readers/stretch_stream.h"

#include <algorithm>

#include "apps/tessarin/console/failure.h"

StretchStream::StretchStream(data_source_handle samples, sample_range range)
    : source(std::move(samples)), byteLength(source->SamplesToBytes(range.end - range.first)) {
    tessarin::IPCMDataSourceStream* made = nullptr;
    const int32_t code = CreatePCMDataSourceStream(source.get(), &made);
    if (code != tessarin::kNoError) {
        throw EngineFailure("--from", code);
    }
    stream.reset(made);
    stream->SetRange(range.first, range.end - range.first);
}

void StretchStream::GetFormat(tessarin::PCMFormat* out) {
    stream->GetFormat(out);
}

uint32_t StretchStream::GetSize() {
    return static_cast<uint32_t>(byteLength);
}

int32_t StretchStream::Read(void* buffer, int32_t bytes) {
    const int32_t delivered = stream->Read(buffer, std::clamp(bytes, 0, bytesLeft));
    bytesLeft -= std::max(delivered, 0);
    return delivered;
}

tessarin::error_code StretchStream::Start() {
    bytesLeft = byteLength;
    return stream->Start();
}
