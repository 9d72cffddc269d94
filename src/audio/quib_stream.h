#pragma once

#include <cstdint>

#include "audio/files/pcm_rdr_stream.h"
#include "base/counted_ptr.h"

namespace tessarin {

/// Whether the engine takes samples of `format`: 8 or 16 bits, at least one channel.
bool IsReadable(const PCMFormat& format);

/// Fills in the format of `stream`, with its rate as 16.16 fixed point however the host gave it.
/// Returns false when it is not readable.
[[nodiscard]] bool ReadHostFormat(IQuibPCMStream& stream, PCMFormat* out);

/// Reader of audio that a host delivers, directly or through an installed reader.
class CQuibStream : public CPCMRdrStream {
public:
    const char* GetStreamName() override { return "AudioReader"; }
    CPCMRdrStream* GetSourceStream() override { return nullptr; }
    error_code SetSourceStream(CPCMRdrStream* stream) override;
    error_code Start() override;
    error_code ReadBlock(void* buffer, uint32_t* frames) override;

    /// Reads from `stream`, which the host keeps alive as long as this object. Returns 0, 2 without
    /// a stream, or 12 for a format that is not 8 or 16 bits with at least one channel.
    virtual error_code Open(IQuibPCMStream* stream);
    /// Open with a stream that this object keeps a reference to.
    virtual error_code Open2(IInstallableAudioStream* stream);
    /// Does nothing: what is read stays with its owner.
    virtual error_code Close();

private:
    IQuibPCMStream* source = nullptr;
    counted_ptr<IInstallableAudioStream> ownedSource; ///< only after Open2
};

} // namespace tessarin
