#include "session/audio_samples.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>

#include "audio/files/mmio_file.h"
#include "audio/files/pcm_data_source_factory.h"
#include "base/little_endian.h"
#include "mouth/loudness.h"

const std::vector<float>& tessarin_audio::GetLoudness() const {
    std::call_once(isMeasured, [this] { loudness = tessarin::MeasureLoudness(samples, rateHz); });
    return loudness;
}

namespace tessarin {

namespace {

static_assert(std::endian::native == std::endian::little, "samples are handed on as bytes");

using channel_list = std::vector<std::unique_ptr<CPCMDataSource>>;

std::vector<int16_t> SamplesOf(IPCMDataSource& source) {
    auto count = static_cast<uint32_t>(source.GetNumSamples());
    std::vector<int16_t> samples(count);
    if (count > 0 && source.ReadSamplesInt16(samples.data(), 0, &count, 1) != kNoError) {
        samples.clear();
    }
    return samples;
}

std::vector<int16_t> MeanOf(const channel_list& channels) {
    std::vector<float> sums;
    for (const auto& channel : channels) {
        const std::vector<int16_t> samples = SamplesOf(*channel);
        sums.resize(std::max(sums.size(), samples.size()));
        std::ranges::transform(samples, sums, sums.begin(),
                               [](int16_t sample, float sum) { return sum + sample; });
    }
    std::vector<int16_t> mean(sums.size());
    const auto count = static_cast<float>(channels.size());
    std::ranges::transform(sums, mean.begin(), [count](float sum) {
        return static_cast<int16_t>(std::nearbyint(sum / count));
    });
    return mean;
}

/// Of such a file the reader converts only a part of each block.
bool HasSeveralChannelsOf24Bits(const char* path) {
    constexpr size_t kChannelsAt = 2;
    constexpr size_t kBitsAt = 14;
    std::array<uint8_t, 16> record{};
    MmioFile file;
    mmio_chunk riff;
    mmio_chunk format;
    return file.Open(path) == kMmioNoError &&
           file.DescendForm(FourCC("WAVE"), &riff) == kMmioNoError &&
           file.DescendChunk(FourCC("fmt "), riff, &format) == kMmioNoError &&
           file.Read(record.data(), record.size()) == int64_t{record.size()} &&
           LoadLittleEndian<uint16_t>(&record[kChannelsAt]) > 1 &&
           LoadLittleEndian<uint16_t>(&record[kBitsAt]) == 24;
}

} // namespace

error_code LoadAudio(const char* path, uint32_t channel, std::unique_ptr<tessarin_audio>& out) {
    if (HasSeveralChannelsOf24Bits(path)) {
        return kNotAvailable;
    }
    channel_list channels;
    const error_code code = LoadChannels(path, nullptr, channels);
    if (code != kNoError) {
        return code;
    }
    if (channel > channels.size() || channels.empty()) {
        return kOutOfRange;
    }
    out = std::make_unique<tessarin_audio>();
    out->rateHz = channels.front()->GetSampleRate() >> 16;
    out->samples = channel == 0 ? MeanOf(channels) : SamplesOf(*channels[channel - 1]);
    return kNoError;
}

int16_t SampleFromFloat(float value) {
    const float scaled = std::isfinite(value) ? std::nearbyint(value * 32768.0f) : 0.0f;
    return static_cast<int16_t>(std::clamp(scaled, -32768.0f, 32767.0f));
}

error_code FindStretch(const tessarin_audio& audio, int32_t fromMs, int32_t toMs,
                       std::span<const int16_t>& out) {
    const auto size = static_cast<int64_t>(audio.samples.size());
    const int64_t first = int64_t{fromMs} * audio.rateHz / 1000;
    const int64_t end = toMs == 0 ? size : std::min(int64_t{toMs} * audio.rateHz / 1000, size);
    if (fromMs < 0 || toMs < 0 || first > end) {
        return kOutOfRange;
    }
    out = std::span(audio.samples)
              .subspan(static_cast<size_t>(first), static_cast<size_t>(end - first));
    return kNoError;
}

void SampleStream::GetFormat(PCMFormat* out) {
    *out = {rateHz << 16, 16, 1};
}

uint32_t SampleStream::GetSize() {
    return static_cast<uint32_t>(samples.size_bytes());
}

int32_t SampleStream::Read(void* buffer, int32_t bytes) {
    const auto wanted = static_cast<size_t>(std::max(bytes, 0));
    const size_t count = std::min(wanted, samples.size_bytes() - position);
    if (count > 0) {
        std::memcpy(buffer, reinterpret_cast<const char*>(samples.data()) + position, count);
    }
    position += count;
    return static_cast<int32_t>(count);
}

error_code SampleStream::Start() {
    position = 0;
    return kNoError;
}

} // namespace tessarin
