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

/// `read` is asked for a number of samples until it gives none; it may give fewer than asked.
template <class Read> void MeasureBlocks(uint32_t rateHz, std::vector<float>* out, Read read) {
    std::vector<int16_t> block(size_t{rateHz} * kBlockSeconds);
    size_t held = 0;
    for (bool isOver = block.empty(); !isOver;) {
        const size_t got = read(block.data() + held, block.size() - held);
        held += got;
        isOver = got == 0;
        if (held == block.size() || (isOver && held > 0)) {
            AddLoudness(block.data(), held, rateHz, out);
            held = 0;
        }
    }
}

void MeasureSource(tessarin::IPCMDataSource& source, std::vector<float>* out) {
    int32_t start = 0;
    MeasureBlocks(source.GetSampleRate() >> 16, out, [&](int16_t* to, size_t room) -> size_t {
        auto count = static_cast<uint32_t>(room);
        if (start >= source.GetNumSamples() ||
            source.ReadSamplesInt16(to, start, &count, 1) != tessarin::kNoError) {
            return 0;
        }
        start += static_cast<int32_t>(count);
        return count;
    });
}

void MeasureStream(tessarin::IQuibPCMStream& stream, std::vector<float>* out) {
    tessarin::PCMFormat format{};
    stream.GetFormat(&format);
    stream.Start();
    MeasureBlocks(format.sampleRate >> 16, out, [&](int16_t* to, size_t room) {
        const int32_t bytes = stream.Read(to, static_cast<int32_t>(room * sizeof(int16_t)));
        return static_cast<size_t>(std::max(bytes, 0)) / sizeof(int16_t);
    });
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
