#pragma once

#include "audio/pcm_pre_emph_stream.h"
#include "audio/resampled_pcm_stream.h"
#include "audio/win32_pcm_buffer_stream.h"
#include "features/spectral_stream.h"

namespace tessarin {

struct CSpectralFeatureDescriptor;

/// The road from pushed bytes to observations. A read waits for the bytes that it needs; one that
/// is ended by closing `input` delivers silence.
struct realtime_audio_chain {
    realtime_audio_chain() = default;
    realtime_audio_chain(const realtime_audio_chain&) = delete;
    realtime_audio_chain& operator=(const realtime_audio_chain&) = delete;
    ~realtime_audio_chain();

    /// Connects the stages, from audio of `format` to the features of `descriptor`. Returns 0 or
    /// the code of the stage that cannot be set up.
    [[nodiscard]] error_code Init(const PCMFormat& format,
                                  const CSpectralFeatureDescriptor& descriptor);
    /// The same with `source` in the place of the input.
    [[nodiscard]] error_code Connect(CPCMRdrStream& source,
                                     const CSpectralFeatureDescriptor& descriptor);

    CWin32PCMBufferStream input{true};
    CResampledPCMStream resampler;
    CPCMPreEmphStream emphasis;
    CSpectralStream spectral;
};

} // namespace tessarin
