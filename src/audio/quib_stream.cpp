#include "audio/quib_stream.h"

#include <algorithm>
#include <limits>

#include "base/flog.h"

namespace tessarin {

namespace {

/// Rates below this are plain Hz: as 16.16 they would be less than one sample a second.
constexpr uint32_t kFirstFixedPointRate = 55001;

} // namespace

bool IsReadable(const PCMFormat& format) {
    return (format.bitsPerSample == 8 || format.bitsPerSample == 16) && format.channels > 0;
}

bool ReadHostFormat(IQuibPCMStream& stream, PCMFormat* out) {
    stream.GetFormat(out);
    if (out->sampleRate < kFirstFixedPointRate) {
        out->sampleRate <<= 16;
    }
    return IsReadable(*out);
}

error_code CQuibStream::SetSourceStream(CPCMRdrStream*) {
    return kNotAvailable;
}

error_code CQuibStream::Open(IQuibPCMStream* stream) {
    flog scope("CQuibStream::Open");
    source = stream;
    ownedSource.reset();
    if (source == nullptr) {
        return kInvalidArgument;
    }
    bytesPerFrame = 0;
    if (!ReadHostFormat(*source, &format)) {
        return kInvalidFile;
    }
    byteLength = source->GetSize();
    bytesPerFrame = format.bitsPerSample / 8u * format.channels;
    numSamples = byteLength / bytesPerFrame;
    return kNoError;
}

error_code CQuibStream::Open2(IInstallableAudioStream* stream) {
    flog scope("CQuibStream::Open2");
    const error_code code = Open(stream);
    if (code == kNoError) {
        ownedSource = counted_ptr<IInstallableAudioStream>::Share(stream);
    }
    return code;
}

error_code CQuibStream::Start() {
    flog scope("CQuibStream::Start");
    return source == nullptr ? kInvalidArgument : source->Start();
}

error_code CQuibStream::ReadBlock(void* buffer, uint32_t* frames) {
    const uint32_t wanted = *frames;
    *frames = 0;
    if (source == nullptr) {
        return kInvalidArgument;
    }
    if (bytesPerFrame == 0) {
        return kNoError;
    }
    const uint32_t most = std::numeric_limits<int32_t>::max() / bytesPerFrame;
    const int32_t bytes = static_cast<int32_t>(std::min(wanted, most) * bytesPerFrame);
    const int32_t delivered = std::clamp(source->Read(buffer, bytes), 0, bytes);
    *frames = static_cast<uint32_t>(delivered) / bytesPerFrame;
    return kNoError;
}

error_code CQuibStream::Close() {
    flog scope("CQuibStream::Close");
    return kNoError;
}

} // namespace tessarin
