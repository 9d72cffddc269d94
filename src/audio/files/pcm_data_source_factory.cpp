#include "audio/files/pcm_data_source_factory.h"

#include <utility>

#include "audio/files/audio_file_registry.h"
#include "audio/resampled_pcm_stream.h"
#include "base/counted_ptr.h"

namespace tessarin {

namespace {

/// As in the analysis, so that a host sees and hears what the engine does.
constexpr float kCutoff = 0.8f;

error_code OpenReader(const char* path, counted_ptr<CPCMRdrStream>& reader) {
    CPCMRdrStream* opened = nullptr;
    const error_code code = OpenAudioFileStream(path, &opened);
    reader = counted_ptr<CPCMRdrStream>::Adopt(opened);
    return code;
}

uint32_t ChannelsOf(CPCMRdrStream& reader) {
    PCMFormat format{};
    reader.GetFormat(&format);
    return format.channels;
}

error_code LoadChannel(CPCMRdrStream& reader, const PCMFormat& target, uint32_t channel,
                       ProgressSink* sink, std::unique_ptr<CPCMDataSource>& out) {
    CResampledPCMStream resampled;
    error_code code = resampled.Instantiate(&reader, &target, channel, kCutoff);
    if (code != kNoError) {
        return code;
    }
    auto source = std::make_unique<CPCMDataSource>();
    code = source->LoadFromPCMStream(&resampled, sink);
    if (code == kNoError) {
        out = std::move(source);
    }
    return code;
}

} // namespace

error_code LoadDataSource(const char* path, const PCMFormat* target, ProgressSink* sink,
                          std::unique_ptr<CPCMDataSource>& out) {
    if (target == nullptr) {
        return kInvalidArgument;
    }
    counted_ptr<CPCMRdrStream> reader;
    const error_code code = OpenReader(path, reader);
    return code == kNoError ? LoadChannel(*reader, *target, 1, sink, out) : code;
}

error_code LoadChannels(const char* path, ProgressSink* sink,
                        std::vector<std::unique_ptr<CPCMDataSource>>& out) {
    counted_ptr<CPCMRdrStream> reader;
    error_code code = OpenReader(path, reader);
    if (code != kNoError) {
        return code;
    }
    PCMFormat format{};
    reader->GetFormat(&format);
    for (uint32_t channel = 1; channel <= format.channels && code == kNoError; ++channel) {
        std::unique_ptr<CPCMDataSource> source;
        code = LoadChannel(*reader, format, channel, sink, source);
        if (code == kNoError) {
            out.push_back(std::move(source));
        }
    }
    return code;
}

error_code CountChannels(const char* path, uint32_t& count) {
    counted_ptr<CPCMRdrStream> reader;
    const error_code code = OpenReader(path, reader);
    if (code == kNoError) {
        count = ChannelsOf(*reader);
    }
    return code;
}

error_code LoadChannelsAtOnce(const char* path, uint32_t maxChannels, ProgressSink* sink,
                              uint32_t& count, std::vector<std::unique_ptr<CPCMDataSource>>& out) {
    counted_ptr<CPCMRdrStream> reader;
    error_code code = OpenReader(path, reader);
    if (code != kNoError) {
        return code;
    }
    count = ChannelsOf(*reader);
    if (count > maxChannels) {
        return kOutOfRange;
    }
    if (reader->GetSampleRate() >> 16 == 0) {
        return kInvalidArgument;
    }
    CPCMDataSource all;
    code = all.LoadFromPCMStream(reader.get(), sink);
    std::vector<std::unique_ptr<CPCMDataSource>> sources(count);
    for (uint32_t i = 0; i < count && code == kNoError; ++i) {
        sources[i] = std::make_unique<CPCMDataSource>();
        code = sources[i]->TakeChannel(all, i + 1);
    }
    if (code == kNoError) {
        out = std::move(sources);
    }
    return code;
}

error_code LoadDataSource(IQuibPCMStream* stream, ProgressSink* sink,
                          std::unique_ptr<CPCMDataSource>& out) {
    auto source = std::make_unique<CPCMDataSource>();
    const error_code code = source->LoadFromQuibStream(stream, sink);
    if (code == kNoError) {
        out = std::move(source);
    }
    return code;
}

} // namespace tessarin
