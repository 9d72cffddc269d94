#include <algorithm>
#include <memory>
#include <new>
#include <vector>

#include "audio/files/audio_file_registry.h"
#include "audio/files/pcm_data_source_factory.h"
#include "audio/files/pcm_data_source_stream.h"
#include "base/guarded.h"
#include "platform/floating_point.h"
#include "tessarin/pcm_data_source.h"
#include "tessarin/pcm_stream.h"

using namespace tessarin;

void AddAudioFileFormatReader(IInstallableAudioFileReader* reader) {
    (void)Guarded([&] { GetFileFormatList().Add(reader); });
}

void RemoveAudioFileFormatReader(IInstallableAudioFileReader* reader) {
    (void)Guarded([&] { GetFileFormatList().Remove(reader); });
}

int32_t CreatePCMDataSource(const char* path, const PCMFormat* target, ProgressSink* sink,
                            IPCMDataSource** out) {
    MaskFloatUnderflow();
    if (out == nullptr) {
        return kInvalidArgument;
    }
    *out = nullptr;
    return Guarded([&] {
        std::unique_ptr<CPCMDataSource> source;
        const error_code code = LoadDataSource(path, target, sink, source);
        *out = source.release();
        return code;
    });
}

int32_t CreateMultiChannelPCMDataSource(const char* path, ProgressSink* sink,
                                        IPCMDataSource** out) {
    MaskFloatUnderflow();
    if (out == nullptr) {
        return kInvalidArgument;
    }
    out[0] = out[1] = nullptr;
    return Guarded([&] {
        std::vector<std::unique_ptr<CPCMDataSource>> channels;
        const error_code code = LoadChannels(path, sink, channels);
        if (code == kNoError) {
            std::ranges::transform(channels, out, [](auto& source) { return source.release(); });
        }
        return code;
    });
}

int32_t GetPCMChannelCount(const char* path, uint32_t* count) {
    if (count == nullptr) {
        return kInvalidArgument;
    }
    *count = 0;
    return Guarded([&] { return CountChannels(path, *count); });
}

int32_t CreateMultiChannelPCMDataSources(const char* path, ProgressSink* sink, IPCMDataSource** out,
                                         uint32_t capacity, uint32_t* count) {
    MaskFloatUnderflow();
    if (count == nullptr || (out == nullptr && capacity != 0)) {
        return kInvalidArgument;
    }
    *count = 0;
    std::fill_n(out, capacity, nullptr);
    return Guarded([&] {
        std::vector<std::unique_ptr<CPCMDataSource>> channels;
        const error_code code = LoadChannelsAtOnce(path, capacity, sink, *count, channels);
        std::ranges::transform(channels, out, [](auto& source) { return source.release(); });
        return code;
    });
}

int32_t CreatePCMDataSourceFromQuibStream(IQuibPCMStream* stream, ProgressSink* sink,
                                          IPCMDataSource** out) {
    MaskFloatUnderflow();
    if (out == nullptr) {
        return kInvalidArgument;
    }
    *out = nullptr;
    return Guarded([&] {
        std::unique_ptr<CPCMDataSource> source;
        const error_code code = LoadDataSource(stream, sink, source);
        *out = source.release();
        return code;
    });
}

void DestroyPCMDataSource(IPCMDataSource* source) {
    if (source != nullptr) {
        source->Destroy();
    }
}

int32_t CreatePCMDataSourceStream(IPCMDataSource* source, IPCMDataSourceStream** out) {
    if (out == nullptr) {
        return kOutOfMemory;
    }
    *out = new (std::nothrow) CPCMDataSourceStream(source);
    return *out != nullptr ? kNoError : kOutOfMemory;
}

int32_t DestroyPCMDataSourceStream(IPCMDataSourceStream* stream) {
    if (stream != nullptr) {
        stream->Destroy();
    }
    return kNoError;
}
