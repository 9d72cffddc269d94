#pragma once

#include <memory>

#include "apps/tessarin/readers/recording_samples.h"

/// A range of a data source as the engine takes it: the engine's own stream over a source counts
/// its size in samples and reads on beyond the range, so this one bounds it.
class StretchStream final : public tessarin::IQuibPCMStream {
public:
    /// Takes the source over. Throws Failure.
    StretchStream(data_source_handle samples, sample_range range);

    void GetFormat(tessarin::PCMFormat* out) override;
    uint32_t GetSize() override;
    int32_t Read(void* buffer, int32_t bytes) override;
    tessarin::error_code Start() override;

private:
    using source_stream_handle = std::unique_ptr<tessarin::IPCMDataSourceStream,
                                                 tessarin::destroyer<DestroyPCMDataSourceStream>>;

    data_source_handle source; ///< outlives its stream
    source_stream_handle stream;
    int32_t byteLength;
    int32_t bytesLeft = 0;
};
