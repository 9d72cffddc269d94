#pragma once

#include <cstddef>
#include <cstdint>

#include "tessarin/error_codes.h"
#include "tessarin/export.h"

namespace tessarin {

/// The format of a PCM stream. Samples are interleaved; 8-bit samples are unsigned with a centre of
/// 128, 16-bit samples are signed little-endian. Published layout.
struct PCMFormat {
    uint32_t sampleRate;    ///< 16.16 fixed point: Hz in the high 16 bits
    uint16_t bitsPerSample; ///< 8 or 16
    uint16_t channels;      ///< 1 or more
};
static_assert(sizeof(PCMFormat) == 8 && offsetof(PCMFormat, bitsPerSample) == 4);

/// Audio that a host delivers. Read by one thread at a time; the host keeps the object alive as
/// long as the engine's stream on it lives.
class IQuibPCMStream {
public:
    /// Fills in the format. A rate below 55001 is taken as plain Hz, any other as 16.16.
    virtual void GetFormat(PCMFormat* out) = 0;
    /// The size of the audio in bytes.
    virtual uint32_t GetSize() = 0;
    /// Reads at most `bytes` bytes into `buffer` and returns how many were delivered: 0 at the end;
    /// a negative number ends the stream too.
    virtual int32_t Read(void* buffer, int32_t bytes) = 0;
    /// Rewinds to the first sample. Returns an error code.
    virtual error_code Start() = 0;

protected:
    ~IQuibPCMStream() = default;
};

/// A stream made by an installed reader: counted, with one reference for whoever asked for it.
class IInstallableAudioStream : public IQuibPCMStream {
public:
    /// Takes another reference.
    virtual int32_t AddRef() = 0;
    /// Gives one reference back; the last one frees the stream.
    virtual int32_t Release() = 0;

protected:
    ~IInstallableAudioStream() = default;
};

/// A host's reader of audio files that the built-in readers do not take.
class IInstallableAudioFileReader {
public:
    /// Non-zero in its low byte when this reader wants the file.
    virtual uint32_t CanOpen(const char* path) = 0;
    /// Opens the file. Returns an error code; on success `*out` carries one reference for the
    /// caller.
    virtual error_code OpenFile(const char* path, IInstallableAudioStream** out) = 0;
    /// Called once when the reader is installed.
    virtual int32_t AddRef() = 0;
    /// Called when the reader is removed.
    virtual int32_t Release() = 0;

protected:
    ~IInstallableAudioFileReader() = default;
};

} // namespace tessarin

/// Installs `reader` after those already there and takes a reference. Installed readers are asked
/// in order after the built-in ones. A reader that is installed twice is asked twice. Not locked:
/// install before other threads work with the library.
TESSARIN_API void AddAudioFileFormatReader(tessarin::IInstallableAudioFileReader* reader);

/// Removes every entry of `reader`, giving one reference back for each; a null `reader` removes
/// all readers. Call it before the code of the reader is unloaded: readers that are still installed
/// when the library goes are released then.
TESSARIN_API void RemoveAudioFileFormatReader(tessarin::IInstallableAudioFileReader* reader);
