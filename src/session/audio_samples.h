#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "tessarin/pcm_stream.h"
#include "tessarin/tessarin_c.h"

/// One channel of a recording.
struct tessarin_audio {
    std::vector<int16_t> samples;
    uint32_t rateHz = 0;

    /// The loudness of each 10 ms of the samples, which do not change any more. Measured once,
    /// however many searches ask; any thread may.
    const std::vector<float>& GetLoudness() const;

private:
    mutable std::once_flag isMeasured;
    mutable std::vector<float> loudness;
};

namespace tessarin {

inline constexpr uint32_t kHighestRateHz = 65535;
inline constexpr uint32_t kMostSamples = 1u << 30;

/// Reads a channel of a file, or the mean of all of them for channel 0.
error_code LoadAudio(const char* path, uint32_t channel, std::unique_ptr<tessarin_audio>& out);

/// A sample from -1 to 1 in the 16-bit range.
int16_t SampleFromFloat(float value);

/// The stretch of `audio` between two times; an end of 0 is the end of the audio. Returns 0, or 3
/// when it is not in the audio.
error_code FindStretch(const tessarin_audio& audio, int32_t fromMs, int32_t toMs,
                       std::span<const int16_t>& out);

/// A stretch of samples as the engine's readers take it. Borrows them.
class SampleStream final : public IQuibPCMStream {
public:
    SampleStream(std::span<const int16_t> stretch, uint32_t stretchRateHz)
        : samples(stretch), rateHz(stretchRateHz) {}

    void GetFormat(PCMFormat* out) override;
    uint32_t GetSize() override;
    int32_t Read(void* buffer, int32_t bytes) override;
    error_code Start() override;

private:
    std::span<const int16_t> samples;
    uint32_t rateHz;
    size_t position = 0; ///< in bytes
};

} // namespace tessarin
