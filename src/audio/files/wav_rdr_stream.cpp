#include "audio/files/wav_rdr_stream.h"

#include <new>

#include "audio/sample_conversion.h"
#include "base/flog.h"
#include "base/little_endian.h"

namespace tessarin {

namespace {

constexpr uint32_t kOldFormatSize = 14; ///< a record without its last field, the bits
constexpr uint32_t kFormatSize = 16;
constexpr uint32_t kFormatRoom = 18;
constexpr uint32_t kLongestFormat = kFormatRoom + 65535; ///< an extension has a 16-bit size
constexpr uint16_t kPcmTag = 1;
constexpr uint16_t kExtensibleTag = 65534;

/// The record of a "fmt " chunk, by the places of its fields.
struct wave_format {
    const uint8_t* bytes;

    uint16_t Tag() const { return LoadLittleEndian<uint16_t>(bytes); }
    uint16_t Channels() const { return LoadLittleEndian<uint16_t>(bytes + 2); }
    uint32_t SamplesPerSecond() const { return LoadLittleEndian<uint32_t>(bytes + 4); }
    uint16_t BitsPerSample() const { return LoadLittleEndian<uint16_t>(bytes + 14); }
};

} // namespace

error_code MapWaveError(int32_t mmioError) {
    switch (mmioError) {
    case kMmioNoError:
        return kNoError;
    case kMmioCannotWrite:
    case kMmioAccessDenied:
    case kMmioSharingViolation:
        return kFileInUse;
    case kMmioCannotSeek:
    case kMmioChunkNotFound:
    case kMmioInvalidFile:
        return kInvalidFile;
    case kMmioPathNotFound:
    case kMmioNetworkError:
        return kFileNotFound;
    case kMmioTooManyOpenFiles:
        return kOutOfMemory;
    default:
        return kInternalError;
    }
}

error_code CWavRdrStream::SetSourceStream(CPCMRdrStream*) {
    return kNotAvailable;
}

error_code CWavRdrStream::Open(const char* path) {
    flog scope("CWavRdrStream::Open");
    uint32_t dataSize = 0;
    const error_code code = FindChunks(path, &dataSize);
    if (code != kNoError) {
        Close();
        return code;
    }
    return SetUpFormat(dataSize);
}

/// Reads the "fmt " chunk and stops at the first byte of the "data" chunk.
error_code CWavRdrStream::FindChunks(const char* path, uint32_t* dataSize) {
    if (const int32_t error = fileHandle.Open(path)) {
        return MapWaveError(error);
    }
    mmio_chunk riff;
    if (const int32_t error = fileHandle.DescendForm(FourCC("WAVE"), &riff)) {
        return MapWaveError(error);
    }
    mmio_chunk chunk;
    if (const int32_t error = fileHandle.DescendChunk(FourCC("fmt "), riff, &chunk)) {
        return MapWaveError(error);
    }
    if (const error_code code = ReadFormatChunk(chunk.size)) {
        return code;
    }
    if (const int32_t error = fileHandle.Ascend(chunk)) {
        return MapWaveError(error);
    }
    // Kept: the sub-format of an extensible record is not looked at, so what claims 8, 16 or 24
    // bits there is read as integers; recordings with a mistaken sub-format open all the same.
    const uint16_t tag = wave_format{waveFormat.get()}.Tag();
    if (tag != kPcmTag && tag != kExtensibleTag) {
        return kCompressedFile;
    }
    if (const int32_t error = fileHandle.DescendChunk(FourCC("data"), riff, &chunk)) {
        return MapWaveError(error);
    }
    data = HeldExtent(chunk.dataStart, chunk.size, fileHandle.GetSize());
    *dataSize = chunk.size;
    return kNoError;
}

error_code CWavRdrStream::ReadFormatChunk(uint32_t size) {
    if (size != kOldFormatSize && (size < kFormatSize || size > kLongestFormat)) {
        return kInvalidFile;
    }
    waveFormat.reset(new (std::nothrow) uint8_t[size == kOldFormatSize ? kFormatRoom : size]);
    if (waveFormat == nullptr) {
        return kOutOfMemory;
    }
    if (fileHandle.Read(waveFormat.get(), size) != int64_t{size}) {
        return kInvalidFile;
    }
    if (size == kOldFormatSize) {
        // Kept: a record that ends before its bits means 8 of them, whatever its other fields say,
        // for nothing else was recorded when such records were written.
        StoreLittleEndian<uint16_t>(waveFormat.get() + kOldFormatSize, 8);
    }
    return kNoError;
}

error_code CWavRdrStream::SetUpFormat(uint32_t dataSize) {
    const wave_format stored{waveFormat.get()};
    const uint32_t channels = stored.Channels();
    const uint32_t rate = stored.SamplesPerSecond();
    uint32_t bits = stored.BitsPerSample();
    if (channels == 0 || rate > 65535) { // a higher rate has no place in 16.16
        return kInvalidFile;
    }
    is24Bit = bits == 24;
    if (is24Bit) {
        dataSize = dataSize / (channels * 3) * channels * 2;
        bits = 16;
    }
    if (bits != 8 && bits != 16) {
        return kInvalidFile;
    }
    format = {rate << 16, static_cast<uint16_t>(bits), static_cast<uint16_t>(channels)};
    byteLength = dataSize;
    bytesPerFrame = bits / 8 * channels;
    numSamples = byteLength / bytesPerFrame;
    heldSamples = static_cast<uint32_t>(data.length / (is24Bit ? channels * 3 : bytesPerFrame));
    return kNoError;
}

error_code CWavRdrStream::Start() {
    flog scope("CWavRdrStream::Start");
    if (!fileHandle.IsOpen() || fileHandle.Seek(data.start) != kMmioNoError) {
        return kInternalError;
    }
    return kNoError;
}

error_code CWavRdrStream::ReadBlock(void* buffer, uint32_t* frames) {
    if (!fileHandle.IsOpen()) {
        *frames = 0;
        return kNoError;
    }
    if (is24Bit) {
        return Read24BitBlock(buffer, frames);
    }
    return ReadFrames(fileHandle, data, bytesPerFrame, buffer, frames);
}

// Kept: of several channels only the first `frames` values are converted, so only the first part of
// the buffer is written; hosts read such files by a reader of their own.
error_code CWavRdrStream::Read24BitBlock(void* buffer, uint32_t* frames) {
    const uint32_t frameSize = format.channels * 3u;
    const int64_t bytes = data.Clip(fileHandle.Tell(), int64_t{*frames} * frameSize);
    const std::unique_ptr<uint8_t[]> raw(new (std::nothrow)
                                             uint8_t[static_cast<size_t>(bytes) + 1]);
    if (raw == nullptr) {
        *frames = 0;
        return kOutOfMemory;
    }
    const error_code code = ReadFrames(fileHandle, data, frameSize, raw.get(), frames);
    Int16From24Bits({static_cast<int16_t*>(buffer), *frames}, raw.get());
    return code;
}

error_code CWavRdrStream::Close() {
    flog scope("CWavRdrStream::Close");
    fileHandle.Close();
    waveFormat.reset();
    return kNoError;
}

} // namespace tessarin
