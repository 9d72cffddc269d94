#pragma once

#include <cstdint>

#include "audio/files/data_extent.h"
#include "audio/files/pcm_rdr_stream.h"
#include "platform/binary_file.h"

namespace tessarin {

/// The number of a Sphere header line `key -i number`, or `fallback` when the first mention of
/// `key` is not followed by one. `text` is zero-terminated.
int32_t GetHeaderInt(const char* text, const char* key, int32_t fallback);

/// Reader of NIST Sphere files. The data is taken as plain PCM, little-endian when 16-bit: the
/// header's sample coding and byte order are not looked at.
class CNistSphereRdrStream : public CPCMRdrStream {
public:
    const char* GetStreamName() override { return "AudioReader"; }
    CPCMRdrStream* GetSourceStream() override { return nullptr; }
    error_code SetSourceStream(CPCMRdrStream* stream) override;
    error_code Start() override;
    error_code ReadBlock(void* buffer, uint32_t* frames) override;

    /// Opens `path`. Returns 0, 10 when it does not open, 12 when it is not a Sphere file or its
    /// rate cannot be presented, or 1 without memory.
    virtual error_code Open(const char* path);
    /// Closes the file; safe when none is open.
    virtual error_code Close();

private:
    error_code ReadHeader();
    error_code SetUpFormat(const char* header);

    BinaryFile file;
    data_extent data; ///< of the samples that the file holds
};

} // namespace tessarin
