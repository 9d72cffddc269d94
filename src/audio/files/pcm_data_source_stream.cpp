#include "audio/files/pcm_data_source_stream.h"

#include <algorithm>

namespace tessarin {

CPCMDataSourceStream::CPCMDataSourceStream(IPCMDataSource* pcm)
    : source(pcm), numSamples(pcm != nullptr ? std::max(pcm->GetNumSamples(), 0) : 0) {}

void CPCMDataSourceStream::GetFormat(PCMFormat* out) {
    if (out == nullptr) {
        return;
    }
    *out = {};
    if (source != nullptr) {
        source->GetFormat(out);
    }
}

// Kept: samples, where the contract of a stream speaks of bytes; hosts that show how much is left
// of a range count with it.
uint32_t CPCMDataSourceStream::GetSize() {
    return static_cast<uint32_t>(numSamples);
}

error_code CPCMDataSourceStream::Start() {
    position = source != nullptr ? source->SamplesToBytes(startSample) : 0;
    return kNoError;
}

void CPCMDataSourceStream::SetRange(int32_t start, int32_t count) {
    const int32_t available = source != nullptr ? std::max(source->GetNumSamples(), 0) : 0;
    startSample = start >= 0 && start < available ? start : 0;
    numSamples = std::min(std::max(count, 0), available - startSample);
}

int32_t CPCMDataSourceStream::Read(void* buffer, int32_t bytes) {
    if (source == nullptr || buffer == nullptr || bytes <= 0) {
        return 0;
    }
    auto count = static_cast<uint32_t>(std::max(source->BytesToSamples(bytes), 0));
    if (source->ReadSamples(buffer, source->BytesToSamples(position), &count, 1) != kNoError) {
        return 0;
    }
    const int32_t delivered = source->SamplesToBytes(static_cast<int32_t>(count));
    position += delivered;
    return delivered;
}

} // namespace tessarin
