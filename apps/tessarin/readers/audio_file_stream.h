#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tessarin/pcm_stream.h"

/// What a recording holds, as far as the audio library knows.
struct recording_info {
    int64_t frames = 0; ///< sample frames
    int sampleRate = 0; ///< Hz
    int channels = 0;
    std::string container; ///< such as "WAV (Microsoft)"
    std::string encoding;  ///< such as "Signed 16 bit PCM"
    bool builtIn = false;  ///< the engine's own readers read the first channel of it exactly
};

/// Fills in `info` when the audio library knows the file; false when it does not.
bool ProbeRecording(const std::string& path, recording_info* info);

/// A host's stream over any file that the audio library reads: one channel, or the mean of all,
/// as 16-bit mono. Rates that do not fit the engine's 16.16 format are brought to 48 kHz.
class AudioFileStream final : public tessarin::IQuibPCMStream {
public:
    /// `channel` counts from 1; 0 means the mean of all channels. Throws Failure.
    AudioFileStream(const std::string& path, int channel);
    ~AudioFileStream();

    void GetFormat(tessarin::PCMFormat* out) override;
    uint32_t GetSize() override;
    int32_t Read(void* buffer, int32_t bytes) override;
    tessarin::error_code Start() override;

private:
    struct decoder;

    size_t DecodeMono(float* out, size_t frames);
    size_t DecodeResampled(float* out, size_t frames);

    std::unique_ptr<decoder> source;
    std::vector<float> interleaved;
    std::vector<float> mono;
    std::vector<float> pending;
};
