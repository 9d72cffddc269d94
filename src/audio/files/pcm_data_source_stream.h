#pragma once

#include <cstdint>

#include "tessarin/pcm_data_source.h"

namespace tessarin {

/// A range of a data source as a host's stream, so that the engine reads what a host has in memory.
class CPCMDataSourceStream : public IPCMDataSourceStream {
public:
    /// Over all of `pcm`, which may be null.
    explicit CPCMDataSourceStream(IPCMDataSource* pcm);

    void GetFormat(PCMFormat* out) override;
    uint32_t GetSize() override;
    int32_t Read(void* buffer, int32_t bytes) override;
    error_code Start() override;
    void SetRange(int32_t start, int32_t count) override;
    void SetSource(IPCMDataSource* pcm) override { source = pcm; }
    void Destroy() override { delete this; }

private:
    int32_t position = 0; ///< bytes
    IPCMDataSource* source = nullptr;
    int32_t startSample = 0;
    int32_t numSamples = 0;
};

} // namespace tessarin
