#include <algorithm>
#include <limits>

#include "audio/files/pcm_data_source.h"
#include "audio/quib_stream.h"

namespace tessarin {

namespace {

// The blocks in which the default front end reads: a window of samples, then a hop for each
// further window. A stage that depends on the block size gives the host what the engine hears.
constexpr uint32_t kFirstBlock = 352;
constexpr uint32_t kNextBlock = 160;
constexpr int32_t kHostBlockBytes = 4128;

bool IsCancelled(ProgressSink* sink, uint32_t done, uint32_t total) {
    return sink != nullptr && sink->OnProgress(done, total);
}

/// Reads up to `total` frames to `data`. Returns 0, 5 when cancelled, or the code of a failed read.
error_code ReadAll(CPCMRdrStream& stream, uint8_t* data, uint32_t total, size_t frameBytes,
                   ProgressSink* sink) {
    uint32_t block = kFirstBlock;
    for (uint32_t done = 0; done < total;) {
        const uint32_t wanted = std::min(block, total - done);
        uint32_t frames = wanted;
        const error_code code = stream.ReadBlock(data + done * frameBytes, &frames);
        if (code != kNoError || frames == 0) {
            return code;
        }
        done += std::min(frames, wanted);
        block = kNextBlock;
        if (IsCancelled(sink, done, total)) {
            return kUserCancelled;
        }
    }
    return kNoError;
}

/// The same for a host's stream, in bytes.
error_code ReadAll(IQuibPCMStream& stream, uint8_t* data, int32_t total, ProgressSink* sink) {
    for (int32_t done = 0; done < total;) {
        const int32_t wanted = std::min(kHostBlockBytes, total - done);
        const int32_t delivered = std::min(stream.Read(data + done, wanted), wanted);
        if (delivered <= 0) {
            return kNoError;
        }
        done += delivered;
        if (IsCancelled(sink, static_cast<uint32_t>(done), static_cast<uint32_t>(total))) {
            return kUserCancelled;
        }
    }
    return kNoError;
}

} // namespace

error_code CPCMDataSource::LoadFromPCMStream(CPCMRdrStream* stream, ProgressSink* sink) {
    if (stream == nullptr) {
        return kInvalidArgument;
    }
    PCMFormat streamFormat{};
    stream->GetFormat(&streamFormat);
    if (!IsReadable(streamFormat)) {
        return kInvalidFile;
    }
    uint32_t frames = stream->GetNumSamples();
    uint32_t bytes = stream->GetByteLength();
    if (const uint32_t held = stream->GetHeldSamples(); held < frames) {
        frames = held;
        bytes = std::min(bytes, held * (streamFormat.bitsPerSample / 8u * streamFormat.channels));
    }
    error_code code = Allocate(streamFormat, bytes, frames);
    if (code != kNoError) {
        return code;
    }
    code = stream->Start();
    if (code == kNoError) {
        code = ReadAll(*stream, data, static_cast<uint32_t>(numSamples),
                       static_cast<size_t>(bytesPerFrame), sink);
    }
    (void)stream->Stop(); // all that it could say has been read
    if (code != kNoError) {
        MakeEmpty();
    }
    return kNoError;
}

error_code CPCMDataSource::LoadFromQuibStream(IQuibPCMStream* stream, ProgressSink* sink) {
    if (stream == nullptr) {
        return kInvalidArgument;
    }
    PCMFormat streamFormat{};
    if (!ReadHostFormat(*stream, &streamFormat)) {
        return kInvalidFile;
    }
    const uint32_t size = stream->GetSize();
    error_code code = Allocate(streamFormat, size,
                               size / (streamFormat.bitsPerSample / 8u * streamFormat.channels));
    if (code != kNoError) {
        return code;
    }
    code = stream->Start();
    if (code == kNoError) {
        code = ReadAll(*stream, data, byteLength, sink);
    }
    if (code != kNoError) {
        MakeEmpty();
    }
    return kNoError;
}

} // namespace tessarin
