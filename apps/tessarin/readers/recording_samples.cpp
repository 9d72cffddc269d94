#include "apps/tessarin/readers/recording_samples.h"

#include <algorithm>
#include <filesystem>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/readers/audio_file_stream.h"
#include "apps/tessarin/readers/recording_failure.h"

namespace {

using tessarin::IPCMDataSource;

constexpr size_t kMostChannels = 65535; // what a file can say

void RequireDone(const std::string& path, int32_t code) {
    if (code != tessarin::kNoError) {
        throw NotARecording(path, code);
    }
}

/// For a file that only the engine knows.
std::vector<data_source_handle> LoadByEngine(const std::string& path) {
    std::vector<IPCMDataSource*> channels(kMostChannels, nullptr);
    RequireDone(path, CreateMultiChannelPCMDataSource(path.c_str(), nullptr, channels.data()));
    std::vector<data_source_handle> sources;
    for (size_t i = 0; i < channels.size() && channels[i] != nullptr; ++i) {
        sources.emplace_back(channels[i]);
    }
    RequireSamples(path, sources.empty() ? 0 : sources.front()->GetNumSamples());
    return sources;
}

data_source_handle LoadByEngine(const std::string& path, int rate, tessarin::ProgressSink* sink) {
    const tessarin::PCMFormat format = {static_cast<uint32_t>(rate) << 16, 16, 1};
    IPCMDataSource* source = nullptr;
    RequireDone(path, CreatePCMDataSource(path.c_str(), &format, sink, &source));
    return data_source_handle(source);
}

data_source_handle LoadByStream(const std::string& path, int channel,
                                tessarin::ProgressSink* sink) {
    AudioFileStream stream(path, channel);
    IPCMDataSource* source = nullptr;
    RequireDone(path, CreatePCMDataSourceFromQuibStream(&stream, sink, &source));
    return data_source_handle(source);
}

data_source_handle LoadKnown(const std::string& path, int channel, const recording_info& info,
                             tessarin::ProgressSink* sink) {
    return info.builtIn && channel == 1 ? LoadByEngine(path, info.sampleRate, sink)
                                        : LoadByStream(path, channel, sink);
}

void RequireFile(const std::string& path) {
    if (!std::filesystem::exists(path)) {
        throw Failure(kExitFailed, DescribeCode(path, tessarin::kFileNotFound));
    }
}

} // namespace

data_source_handle LoadSamples(const std::string& path, int channel,
                               tessarin::ProgressSink* progress) {
    RequireFile(path);
    recording_info info;
    if (ProbeRecording(path, &info)) {
        RequireSamples(path, info.frames);
        return LoadKnown(path, channel, info, progress);
    }
    std::vector<data_source_handle> channels = LoadByEngine(path);
    const size_t index = channel > 0 ? static_cast<size_t>(channel) - 1 : 0;
    if (index >= channels.size() || (channel == 0 && channels.size() > 1)) {
        throw Failure(kExitFailed, path + ": has " + std::to_string(channels.size()) +
                                       " channel(s); choose one of them");
    }
    return std::move(channels[index]);
}

tessarin::flat::audio_owner FlatAudio(const std::string& path, IPCMDataSource& source) {
    auto count = static_cast<uint32_t>(source.GetNumSamples());
    std::vector<int16_t> samples(count);
    if (count > 0) {
        RequireDone(path, source.ReadSamplesInt16(samples.data(), 0, &count, 1));
    }
    tessarin::flat::audio_owner audio;
    RequireDone(path, tessarin_create_audio_from_int16(samples.data(), count,
                                                       source.GetSampleRate() >> 16,
                                                       tessarin::Out(audio)));
    return audio;
}

std::vector<data_source_handle> LoadChannels(const std::string& path) {
    RequireFile(path);
    recording_info info;
    if (!ProbeRecording(path, &info)) {
        return LoadByEngine(path);
    }
    RequireSamples(path, info.frames);
    std::vector<data_source_handle> sources;
    for (int channel = 1; channel <= info.channels; ++channel) {
        sources.push_back(LoadKnown(path, channel, info, nullptr));
    }
    return sources;
}

void AddStretchOptions(CLI::App& command, recording_stretch* stretch) {
    command.add_option("--from", stretch->fromMs, "Where to start, in milliseconds [0]")
        ->check(CLI::NonNegativeNumber)
        ->option_text("MS");
    command.add_option("--to", stretch->toMs, "Where to end, in milliseconds [the end]")
        ->check(CLI::PositiveNumber)
        ->option_text("MS");
}

sample_range FindStretch(const std::string& path, const recording_stretch& stretch,
                         const IPCMDataSource& source) {
    if (stretch.toMs != 0 && stretch.toMs <= stretch.fromMs) {
        throw Failure(kExitUsage, "--to " + std::to_string(stretch.toMs) + " is not after --from " +
                                      std::to_string(stretch.fromMs));
    }
    const int32_t length = source.GetNumSamples();
    const sample_range range = {
        source.MsToSamples(stretch.fromMs),
        stretch.toMs == 0 ? length : std::min(source.MsToSamples(stretch.toMs), length)};
    if (range.first >= range.end) {
        const auto lengthMs = static_cast<int64_t>(source.SamplesToMs(length));
        throw Failure(kExitFailed, path + ": lasts " + std::to_string(lengthMs) +
                                       " ms, so that nothing is left " + "from " +
                                       std::to_string(stretch.fromMs) + " ms on");
    }
    return range;
}
