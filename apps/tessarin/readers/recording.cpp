#include "apps/tessarin/readers/recording.h"

#include <filesystem>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/readers/recording_failure.h"

namespace {

int64_t DurationOf(const recording_info& info) {
    return info.sampleRate > 0 ? info.frames * 1000 / info.sampleRate : 0;
}

void RequireStream(const std::string& path, int32_t code, tessarin::IObservationStream* stream) {
    if (code != tessarin::kNoError || stream == nullptr) {
        throw NotARecording(path, code);
    }
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

tessarin::IObservationStream* OpenStretch(const std::string& path, int channel,
                                          const recording_stretch& stretch,
                                          tessarin::CAccousticHMM& model,
                                          opened_recording* opened) {
    data_source_handle samples = LoadSamples(path, channel, nullptr);
    const sample_range range = FindStretch(path, stretch, *samples);
    opened->durationMs = static_cast<int64_t>(samples->SamplesToMs(samples->GetNumSamples()));
    opened->stretchStream = std::make_unique<StretchStream>(std::move(samples), range);
    tessarin::IObservationStream* stream = nullptr;
    const int32_t code =
        CreateObservationStreamFromQuibStream(opened->stretchStream.get(), &model, &stream);
    RequireStream(path, code, stream);
    return stream;
}

} // namespace

opened_recording OpenRecording(const std::string& path, int channel,
                               const recording_stretch& stretch, tessarin::CAccousticHMM& model) {
    if (!std::filesystem::exists(path)) {
        throw Failure(kExitFailed, DescribeCode(path, tessarin::kFileNotFound));
    }
    opened_recording opened;
    if (!stretch.IsWhole()) {
        opened.observations.reset(OpenStretch(path, channel, stretch, model, &opened));
        return opened;
    }
    recording_info info;
    const bool known = ProbeRecording(path, &info);
    if (known) {
        RequireSamples(path, info.frames);
    }
    tessarin::IObservationStream* stream = nullptr;
    int32_t code = 0;
    if (known && !(info.builtIn && channel == 1)) {
        opened.hostStream = std::make_unique<AudioFileStream>(path, channel);
        code = CreateObservationStreamFromQuibStream(opened.hostStream.get(), &model, &stream);
    } else {
        code = CreateObservationStreamFromAudioFile(path.c_str(), &model, &stream);
    }
    RequireStream(path, code, stream);
    opened.observations.reset(stream);
    opened.durationMs = known ? DurationOf(info) : DurationOf(*stream);
    return opened;
}

void ShiftMarkers(int fromMs, tessarin::ISyncResultsCollection& results) {
    tessarin::CSyncMarker* const end = results.end();
    for (tessarin::CSyncMarker* marker = results.begin(); marker != end; ++marker) {
        marker->start += fromMs;
        marker->end += fromMs;
    }
}
