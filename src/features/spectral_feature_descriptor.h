#pragma once

#include <cstdint>
#include <cstdio>
#include <iosfwd>

#include "base/tarray.h"
#include "features/band_filters.h"

namespace tessarin {

/// Every constant of the spectral analysis. It travels inside the acoustic model, so that audio is
/// always analysed as it was when the model was trained. The defaults are the design point.
/// Final, since the two virtual operations are its whole table: there is no virtual destructor.
struct CSpectralFeatureDescriptor final {
    /// Reads a record and moves `*cursor` and `*remaining` past what it took. Returns false when
    /// the record is cut short, was written by a later version, holds a count that cannot be, or
    /// asks for more windows a second than any model does; the values read so far stay.
    virtual bool Read(const uint8_t** cursor, uint32_t* remaining);
    /// Writes the record in its binary form, always with magic and version. Returns true; the
    /// caller asks `file` for errors.
    virtual bool Write(std::FILE* file);

    /// Takes all values of `other`.
    void CopyFrom(const CSpectralFeatureDescriptor& other);
    /// Writes the values as labelled lines for people to read.
    void WriteText(std::ostream& out) const;

    float sampleRate = 16000.0f; ///< Hz
    float preEmphasis = 0.0f;
    int32_t windowSize = 512;    ///< samples, a power of two
    int32_t windowOverlap = 352; ///< samples
    int32_t numBands = 0;
    TArray<tagBandFilter> bands{4};
    int32_t numCepstra = 8;
    int32_t numFeatures = 15;
    uint32_t flags = 0; ///< kKeepLastCepstrum, kCalcSpectralMean
};

/// Bits of CSpectralFeatureDescriptor::flags.
inline constexpr uint32_t kKeepLastCepstrum = 4; ///< in the three-layer layout
inline constexpr uint32_t kCalcSpectralMean = 8; ///< before the first frame

} // namespace tessarin
