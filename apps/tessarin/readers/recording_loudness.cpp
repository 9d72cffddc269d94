#include "apps/tessarin/readers/recording_loudness.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/readers/audio_file_stream.h"
#include "apps/tessarin/readers/recording_samples.h"
#include "tessarin/tessarin_c.h"

namespace {

/// Whole seconds, since blocks are measured one by one.
constexpr size_t kBlockSeconds = 4;

void AddLoudness(const int16_t* samples, size_t count, uint32_t rateHz, std::vector<float>* out) {
    constexpr size_t kStepsPerSecond = 100;
    const size_t before = out->size();
    auto room = static_cast<uint32_t>((count / rateHz + 1) * kStepsPerSecond);
    out->resize(before + room);
    const int32_t code = tessarin_measure_loudness(samples, static_cast<uint32_t>(count), rateHz,
                                                   out->data() + before, &room);
    if (code != TESSARIN_OK) {
        throw EngineFailure("loudness", code);
    }
    out->resize(before + room);
}

void MeasureSource(tessarin::IPCMDataSource& source, std::vector<float>* out) {
    const uint32_t rateHz = source.GetSampleRate() >> 16;
    std::vector<int16_t> block(size_t{rateHz} * kBlockSeconds);
    for (int32_t start = 0; start < source.GetNumSamples() && !block.empty();) {
        auto count = static_cast<uint32_t>(block.size());
        if (source.ReadSamplesInt16(block.data(), start, &count, 1) != tessarin::kNoError ||
            count == 0) {
            return;
        }
        AddLoudness(block.data(), count, rateHz, out);
        start += static_cast<int32_t>(count);
    }
}

void MeasureStream(tessarin::IQuibPCMStream& stream, std::vector<float>* out) {
    tessarin::PCMFormat format{};
    stream.GetFormat(&format);
    const uint32_t rateHz = format.sampleRate >> 16;
    std::vector<int16_t> block(size_t{rateHz} * kBlockSeconds);
    size_t held = 0;
    stream.Start();
    for (;;) {
        const int32_t bytes = stream.Read(
            block.data() + held, static_cast<int32_t>((block.size() - held) * sizeof(int16_t)));
        held += static_cast<size_t>(std::max(bytes, 0)) / sizeof(int16_t);
        if (held == block.size() || (bytes <= 0 && held > 0)) {
            AddLoudness(block.data(), held, rateHz, out);
            held = 0;
        }
        if (bytes <= 0) {
            return;
        }
    }
}

} // namespace

std::vector<float> MeasureLoudness(const std::string& path, int channel) {
    std::vector<float> loudness;
    recording_info info;
    if (ProbeRecording(path, &info)) {
        AudioFileStream stream(path, channel);
        MeasureStream(stream, &loudness);
    } else { // only the engine knows the file
        MeasureSource(*LoadSamples(path, channel, nullptr), &loudness);
    }
    return loudness;
}
