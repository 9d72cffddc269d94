#include "tools/tessarin/recording.h"

#include <filesystem>

#include "tools/tessarin/failure.h"

namespace {

int64_t DurationOf(const recording_info& info) {
    return info.sampleRate > 0 ? info.frames * 1000 / info.sampleRate : 0;
}

/// For a file that only the engine knows: the length of its analysis.
int64_t DurationOf(tessarin::IObservationStream& stream) {
    uint32_t windowSize = 0;
    uint32_t overlap = 0;
    stream.GetFrameGeometry(&windowSize, &overlap);
    const double rate = stream.GetSampleRate();
    return rate > 0 ? static_cast<int64_t>(stream.GetNumObservations() *
                                           static_cast<double>(windowSize - overlap) * 1000 / rate)
                    : 0;
}

} // namespace

opened_recording OpenRecording(const std::string& path, int channel,
                               tessarin::CAccousticHMM& model) {
    if (!std::filesystem::exists(path)) {
        throw Failure(kExitFailed, DescribeCode(path, tessarin::kFileNotFound));
    }
    opened_recording opened;
    recording_info info;
    const bool known = ProbeRecording(path, &info);
    tessarin::IObservationStream* stream = nullptr;
    int32_t code = 0;
    if (known && !(info.builtIn && channel == 1)) {
        opened.hostStream = std::make_unique<AudioFileStream>(path, channel);
        code = CreateObservationStreamFromQuibStream(opened.hostStream.get(), &model, &stream);
    } else {
        code = CreateObservationStreamFromAudioFile(path.c_str(), &model, &stream);
    }
    if (code != tessarin::kNoError || stream == nullptr) {
        throw EngineFailure(path, code);
    }
    opened.observations.reset(stream);
    opened.durationMs = known ? DurationOf(info) : DurationOf(*stream);
    return opened;
}
