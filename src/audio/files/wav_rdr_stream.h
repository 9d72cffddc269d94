#pragma once

#include <cstdint>
#include <memory>

#include "audio/files/data_extent.h"
#include "audio/files/mmio_file.h"
#include "audio/files/pcm_rdr_stream.h"

namespace tessarin {

/// The engine's code for an error of the multimedia file functions.
error_code MapWaveError(int32_t mmioError);

/// Reader of RIFF WAVE files with 8, 16 or 24 bits. 24-bit samples are presented as 16-bit ones.
class CWavRdrStream : public CPCMRdrStream {
public:
    const char* GetStreamName() override { return "AudioReader"; }
    CPCMRdrStream* GetSourceStream() override { return nullptr; }
    error_code SetSourceStream(CPCMRdrStream* stream) override;
    error_code Start() override;
    error_code ReadBlock(void* buffer, uint32_t* frames) override;

    /// Opens `path`. Returns 0, 12 for a malformed file or a width or rate that cannot be
    /// presented, 13 for compressed audio, 1 without memory, or what MapWaveError says.
    virtual error_code Open(const char* path);
    /// Closes the file; safe when none is open.
    virtual error_code Close();

private:
    error_code FindChunks(const char* path, uint32_t* dataSize);
    error_code ReadFormatChunk(uint32_t size);
    error_code SetUpFormat(uint32_t dataSize);
    error_code Read24BitBlock(void* buffer, uint32_t* frames);

    std::unique_ptr<uint8_t[]> waveFormat; ///< the body of the "fmt " chunk
    MmioFile fileHandle;
    data_extent data; ///< of the samples that the file holds, as stored
    bool is24Bit = false;
};

} // namespace tessarin
