#pragma once

#include <cstdint>

#include "audio/files/pcm_rdr_stream.h"
#include "tessarin/pcm_data_source.h"

namespace tessarin {

/// A recording that a host keeps: loaded once, from any chain of PCM stages or from a host's
/// stream.
class CPCMDataSource : public IPCMDataSource {
public:
    CPCMDataSource() = default;
    CPCMDataSource(const CPCMDataSource&) = delete;
    CPCMDataSource& operator=(const CPCMDataSource&) = delete;
    ~CPCMDataSource() override;

    error_code GetFormat(PCMFormat* out) const override;
    uint32_t GetSampleRate() const override { return format.sampleRate; }
    uint16_t GetBitsPerSample() const override { return format.bitsPerSample; }
    uint32_t GetBytesPerFrame() const override { return static_cast<uint32_t>(bytesPerFrame); }
    int32_t GetNumSamples() const override { return numSamples; }
    int32_t GetByteLength() const override { return byteLength; }
    double SamplesToMs(int32_t samples) const override;
    int32_t BytesToSamples(int32_t bytes) const override;
    int32_t SamplesToBytes(int32_t samples) const override;
    int32_t MsToSamples(int32_t ms) const override;
    error_code ReadSamples(void* buffer, int32_t start, uint32_t* count, int32_t channel) override;
    error_code ReadSamplesInt16(int16_t* buffer, int32_t start, uint32_t* count,
                                int32_t channel) override;
    error_code ReadSamplesFloat(float* buffer, int32_t start, uint32_t* count,
                                int32_t channel) override;
    error_code WriteSamplesFloat(const float* samples, int32_t start, int32_t count) override;
    uint8_t* GetData() const override { return data; }
    IPCMDataSource* Clone() const override;
    error_code CopyFrom(const IPCMDataSource* other) override;
    void Destroy() override { delete this; }

    /// Both read a stream from its start into an empty source, in its own format; `sink` may be
    /// null. Of a file that ends before its claimed length, the source is what the file holds.
    /// Return 0; 2 without a stream; 12 for a format that is not 8 or 16 bits with at least one
    /// channel; 1 without memory or for more bytes than 32 signed bits count. Kept: when the
    /// sink cancels, or the stream fails, the source is empty and the code is 0; hosts know
    /// a cancelled load by its having no samples.
    virtual error_code LoadFromQuibStream(IQuibPCMStream* stream, ProgressSink* sink);
    virtual error_code LoadFromPCMStream(CPCMRdrStream* stream, ProgressSink* sink);

    /// Becomes channel `channel`, counted from 1, of `all`, as 16-bit mono. Returns 0, or 1 without
    /// memory.
    [[nodiscard]] error_code TakeChannel(const CPCMDataSource& all, uint32_t channel);

private:
    error_code Allocate(const PCMFormat& newFormat, uint64_t newByteLength, uint64_t newNumSamples);
    void MakeEmpty();
    size_t ValuesRead(uint32_t count, int32_t channel) const;

    PCMFormat format{};
    int32_t byteLength = 0;
    int32_t numSamples = 0;
    int32_t bytesPerFrame = 0;
    uint8_t* data = nullptr; ///< of the C library, which clears large blocks at no cost
};

} // namespace tessarin
