#include "audio/pcm_pre_emph_stream.h"

#include "audio/float_buffer.h"
#include "audio/pre_emphasis.h"
#include "audio/sample_conversion.h"

namespace tessarin {

namespace {

constexpr uint32_t kMostChannels = 2; ///< that ReadBlock has room for

} // namespace

error_code CPCMPreEmphStream::Instantiate(CPCMRdrStream* stream, uint32_t sourceChannel,
                                          float emphasis) {
    if (stream == nullptr || !FitsInto(kMostChannels, *stream, sourceChannel)) {
        return kInvalidArgument;
    }
    coefficient = emphasis;
    channel = sourceChannel;
    source = counted_ptr<CPCMRdrStream>::Share(stream);
    stream->GetFormat(&format);
    numSamples = stream->GetNumSamples();
    byteLength = stream->GetByteLength();
    bytesPerFrame = format.channels * (format.bitsPerSample / 8u);
    return kNoError;
}

error_code CPCMPreEmphStream::SetSourceStream(CPCMRdrStream* stream) {
    if (stream != nullptr && !FitsInto(kMostChannels, *stream, channel)) {
        return kInvalidArgument;
    }
    source = counted_ptr<CPCMRdrStream>::Share(stream);
    return kNoError;
}

error_code CPCMPreEmphStream::Start() {
    previous = 0.0f;
    return source ? source->Start() : kInvalidArgument;
}

// Kept: the values are filtered once more on top of the filtered float read, since recordings were
// exported this way; analysis reads floats, which are filtered once.
error_code CPCMPreEmphStream::ReadBlock(void* buffer, uint32_t* frames) {
    const auto values = NewFloats(uint64_t{kMostChannels} * *frames);
    if (values == nullptr) {
        *frames = 0;
        return kOutOfMemory;
    }
    const error_code code = ReadChannelFloat(values.get(), frames, channel);
    if (code == kNoError) {
        PreEmphasize({values.get(), *frames}, coefficient, previous);
        Int16FromFloats({static_cast<int16_t*>(buffer), *frames}, {values.get(), *frames});
    }
    return code;
}

error_code CPCMPreEmphStream::ReadChannelFloat(float* buffer, uint32_t* frames,
                                               uint32_t sourceChannel) {
    if (!source) {
        *frames = 0;
        return kInvalidArgument;
    }
    const error_code code = source->ReadChannelFloat(buffer, frames, sourceChannel);
    PreEmphasize({buffer, *frames}, coefficient, previous); // a failed read left 0 frames
    return code;
}

error_code CPCMPreEmphStream::Stop() {
    return source ? source->Stop() : kNoError;
}

} // namespace tessarin
