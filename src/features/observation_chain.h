#pragma once

#include <memory>

#include "tessarin/error_codes.h"

namespace tessarin {

class CPCMRdrStream;
class CSpectralStream;
class IQuibPCMStream;
struct CSpectralFeatureDescriptor;

// The road from audio to observations: reader, resampler, pre-emphasis, spectral stream, rewound to
// the first sample. Each stage holds the one before it; channel 1 is analysed. Each function
// returns an error code and sets `out` on success only.

/// From a reader, in which the chain takes a reference. Returns 2 for a descriptor without a rate.
[[nodiscard]] error_code OpenObservationChain(CPCMRdrStream* reader,
                                              const CSpectralFeatureDescriptor& descriptor,
                                              std::unique_ptr<CSpectralStream>& out);

/// From an audio file.
[[nodiscard]] error_code OpenObservationChain(const char* path,
                                              const CSpectralFeatureDescriptor& descriptor,
                                              std::unique_ptr<CSpectralStream>& out);

/// From audio that the host delivers; `stream` stays the host's.
[[nodiscard]] error_code OpenObservationChain(IQuibPCMStream* stream,
                                              const CSpectralFeatureDescriptor& descriptor,
                                              std::unique_ptr<CSpectralStream>& out);

} // namespace tessarin
