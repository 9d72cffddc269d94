#include "features/spectral_feature_descriptor.h"

#include <algorithm>
#include <array>
#include <new>
#include <ostream>
#include <span>

#include "base/byte_cursor.h"
#include "base/little_endian.h"

namespace tessarin {

namespace {

constexpr uint32_t kMagic = 0x66656174; // the bytes "taef"
constexpr int16_t kVersion = 1;

/// Far beyond what any layout holds. The count has no bytes of the record to answer for it, and
/// searches ask for memory by it.
constexpr int32_t kMaxFeatures = 65536;

// Bounds of the analysis that no model in use comes near, without which a file of some bytes could
// ask for hours of work for a second of audio.
constexpr float kMaxSampleRateHz = 192000.0f;
constexpr int32_t kMaxBands = 256;
constexpr int32_t kMaxWindowsAtOnce = 64; ///< how many windows a sample may be in
constexpr int32_t kMaxObservationsPerSecond = 4000;

/// Whether a second of audio takes a reasonable number of windows. A size that is not a window is
/// left to the stream, which refuses it.
bool IsWithinBounds(const CSpectralFeatureDescriptor& descriptor) {
    const int64_t hop = int64_t{descriptor.windowSize} - descriptor.windowOverlap;
    return !(descriptor.sampleRate > kMaxSampleRateHz) && descriptor.numBands <= kMaxBands &&
           (hop <= 0 ||
            (descriptor.windowSize <= kMaxWindowsAtOnce * hop &&
             !(descriptor.sampleRate > static_cast<float>(kMaxObservationsPerSecond * hop))));
}

/// The version of the record, or 0 for the old form, which has neither magic nor version.
int16_t ReadVersion(ByteCursor& record) {
    ByteCursor ahead = record;
    if (ahead.ReadU32() != kMagic || ahead.Failed()) {
        return 0;
    }
    record.Skip(sizeof(kMagic));
    return record.ReadI16();
}

template <class T> void ReadValue(ByteCursor& record, T& value) {
    record.ReadAll(std::span<T>(&value, 1));
}

bool ReadBands(ByteCursor& record, int32_t count, TArray<tagBandFilter>& bands) {
    if (count < 0 || !record.Holds(static_cast<uint64_t>(count), sizeof(tagBandFilter)) ||
        bands.SetSize(count, 4) == 0) {
        return false;
    }
    for (tagBandFilter& band : bands) {
        band.low = record.ReadF32();
        band.centre = record.ReadF32();
        band.high = record.ReadF32();
        band.reserved = record.ReadF32();
    }
    return true;
}

} // namespace

bool CSpectralFeatureDescriptor::Read(const uint8_t** cursor, uint32_t* remaining) {
    BorrowedByteCursor record(cursor, remaining);
    const int16_t version = ReadVersion(record);
    if (version > kVersion) {
        return false;
    }
    ReadValue(record, sampleRate);
    ReadValue(record, preEmphasis);
    ReadValue(record, windowSize);
    ReadValue(record, windowOverlap);
    ReadValue(record, numFeatures);
    ReadValue(record, numBands);
    const bool fitsFeatures = numFeatures >= 0 && numFeatures <= kMaxFeatures;
    if (record.Failed() || !fitsFeatures || !IsWithinBounds(*this) ||
        !ReadBands(record, numBands, bands)) {
        return false;
    }
    ReadValue(record, numCepstra);
    if (version != 0) {
        ReadValue(record, flags);
    }
    return !record.Failed() && numCepstra >= 0;
}

void CSpectralFeatureDescriptor::CopyFrom(const CSpectralFeatureDescriptor& other) {
    sampleRate = other.sampleRate;
    preEmphasis = other.preEmphasis;
    windowSize = other.windowSize;
    windowOverlap = other.windowOverlap;
    numBands = other.numBands;
    if (bands.SetSize(other.bands.GetSize(), 4) == 0) {
        throw std::bad_alloc();
    }
    std::copy(other.bands.begin(), other.bands.end(), bands.begin());
    numCepstra = other.numCepstra;
    numFeatures = other.numFeatures;
    flags = other.flags;
}

bool CSpectralFeatureDescriptor::Write(std::FILE* file) {
    const auto put = [file](auto value) {
        std::array<uint8_t, sizeof(value)> bytes;
        StoreLittleEndian(bytes.data(), value);
        std::fwrite(bytes.data(), bytes.size(), 1, file);
    };
    put(kMagic);
    put(kVersion);
    put(sampleRate);
    put(preEmphasis);
    put(windowSize);
    put(windowOverlap);
    put(numFeatures);
    put(bands.GetSize());
    for (const tagBandFilter& band : bands) {
        put(band.low);
        put(band.centre);
        put(band.high);
        put(band.reserved);
    }
    put(numCepstra);
    put(flags);
    return true;
}

void CSpectralFeatureDescriptor::WriteText(std::ostream& out) const {
    out << "feat\n"
        << "samplerate: " << sampleRate << '\n'
        << "preemphasis: " << preEmphasis << '\n'
        << "windowSize: " << windowSize << '\n'
        << "windowOverlap: " << windowOverlap << '\n'
        << "numFreatures: " << numFeatures << '\n' // Kept: tools look for this spelling.
        << "numBands: " << numBands << '\n';
    for (const tagBandFilter& band : bands) {
        out << '\t' << band.low << ' ' << band.centre << ' ' << band.high << '\n';
    }
    out << "num_cep: " << numCepstra << '\n' << "flags: " << flags << '\n';
}

} // namespace tessarin
