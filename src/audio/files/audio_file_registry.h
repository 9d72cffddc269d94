#pragma once

#include <vector>

#include "audio/files/pcm_rdr_stream.h"
#include "tessarin/pcm_stream.h"

namespace tessarin {

/// The readers that the host has installed, in order of installation. Not locked: readers are
/// installed before other threads work with the library.
class file_format_list {
public:
    file_format_list() = default;
    file_format_list(const file_format_list&) = delete;
    file_format_list& operator=(const file_format_list&) = delete;
    /// Gives back the references of readers that were never removed.
    ~file_format_list();

    /// Takes a reference to `reader`; null is ignored. A reader that is there already is added
    /// again.
    void Add(IInstallableAudioFileReader* reader);
    /// Removes every entry of `reader`, or all entries when it is null.
    void Remove(IInstallableAudioFileReader* reader);

    const std::vector<IInstallableAudioFileReader*>& GetReaders() const { return readers; }

private:
    std::vector<IInstallableAudioFileReader*> readers;
};

/// The list of this process. It exists from its first use on, so that a host may install readers
/// from its own static constructors.
file_format_list& GetFileFormatList();

/// Opens `path` by its extension, the text from the last dot of the whole path: ".wav" as RIFF and
/// then as Sphere, ".tmp" as RIFF, ".sph" as Sphere; after these, or with any other extension, the
/// installed readers are asked in turn. On success `*out` carries one reference for the caller. On
/// failure it is null and the code is that of the last attempt, so that a missing ".wav" file gives
/// 10 (of the Sphere reader) and a missing ".tmp" file 4; 12 when nothing tried the file, 2 for a
/// null argument.
error_code OpenAudioFileStream(const char* path, CPCMRdrStream** out);

} // namespace tessarin
