#include "audio/files/nist_sphere_rdr_stream.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <optional>

namespace tessarin {

namespace {

constexpr char kMagic[] = "NIST_1A";
constexpr size_t kMagicLength = sizeof(kMagic) - 1;
constexpr size_t kPreambleSize = 16; ///< the magic, a line end, and the header size as text
constexpr size_t kSizeTextLength = 8;
constexpr int32_t kLongestHeader = 1 << 20;

/// The decimal integer at the beginning of `text`, after blanks, held to 32 bits; nothing where
/// none stands.
std::optional<int32_t> ParseDecimal(const char* text) {
    char* end = nullptr;
    const long long value = std::strtoll(text, &end, 10);
    if (end == text) {
        return std::nullopt;
    }
    using limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(std::clamp<long long>(value, limits::min(), limits::max()));
}

/// The size that the 16 bytes at the beginning of a file state for the whole header.
std::optional<int32_t> ParsePreamble(const char* preamble) {
    if (std::memcmp(preamble, kMagic, kMagicLength) != 0) {
        return std::nullopt;
    }
    char sizeText[kSizeTextLength + 1] = {};
    std::memcpy(sizeText, preamble + kMagicLength + 1, kSizeTextLength);
    return ParseDecimal(sizeText);
}

} // namespace

int32_t GetHeaderInt(const char* text, const char* key, int32_t fallback) {
    const char* found = std::strstr(text, key);
    if (found == nullptr) {
        return fallback;
    }
    const char* dash = std::strchr(found + std::strlen(key), '-');
    if (dash == nullptr || dash[1] != 'i') {
        return fallback;
    }
    return ParseDecimal(dash + 2).value_or(0);
}

error_code CNistSphereRdrStream::SetSourceStream(CPCMRdrStream*) {
    return kNotAvailable;
}

error_code CNistSphereRdrStream::Open(const char* path) {
    if (file.Open(path) != open_failure::kNone) {
        Close();
        return kFileNotFound;
    }
    const error_code code = ReadHeader();
    if (code != kNoError) {
        Close();
    }
    return code;
}

error_code CNistSphereRdrStream::ReadHeader() {
    char preamble[kPreambleSize];
    if (file.Read(preamble, sizeof(preamble)) != int64_t{kPreambleSize}) {
        return kInvalidFile;
    }
    const int32_t size = ParsePreamble(preamble).value_or(0);
    if (size < static_cast<int32_t>(kPreambleSize) || size > kLongestHeader) {
        return kInvalidFile;
    }
    const size_t textLength = static_cast<size_t>(size) - kPreambleSize;
    const std::unique_ptr<char[]> text(new (std::nothrow) char[textLength + 1]());
    if (text == nullptr) {
        return kOutOfMemory;
    }
    if (file.Read(text.get(), textLength) != static_cast<int64_t>(textLength)) {
        return kInvalidFile;
    }
    data.start = size;
    return SetUpFormat(text.get());
}

error_code CNistSphereRdrStream::SetUpFormat(const char* header) {
    // Kept: any count but 2 means mono, so a header that is wrong about it still opens.
    const uint32_t channels = GetHeaderInt(header, "channel_count", 1) == 2 ? 2 : 1;
    const int32_t rate = GetHeaderInt(header, "sample_rate", 16000);
    const uint32_t sampleBytes = GetHeaderInt(header, "sample_n_bytes", 2) == 1 ? 1 : 2;
    if (rate < 0 || rate > 65535) { // has no place in 16.16
        return kInvalidFile;
    }
    format = {static_cast<uint32_t>(rate) << 16, static_cast<uint16_t>(sampleBytes * 8),
              static_cast<uint16_t>(channels)};
    // Kept: a header without a count stands for 2 frames, by which such files are recognized.
    numSamples = static_cast<uint32_t>(GetHeaderInt(header, "sample_count", 2));
    bytesPerFrame = sampleBytes * channels;
    byteLength = bytesPerFrame * numSamples;
    data = HeldExtent(data.start, byteLength, file.GetSize());
    heldSamples = static_cast<uint32_t>(data.length / bytesPerFrame);
    return kNoError;
}

error_code CNistSphereRdrStream::Start() {
    return file.IsOpen() && file.Seek(data.start) ? kNoError : kInvalidFile;
}

error_code CNistSphereRdrStream::ReadBlock(void* buffer, uint32_t* frames) {
    if (!file.IsOpen()) {
        *frames = 0;
        return kNoError;
    }
    return ReadFrames(file, data, bytesPerFrame, buffer, frames);
}

error_code CNistSphereRdrStream::Close() {
    file.Close();
    return kNoError;
}

} // namespace tessarin
