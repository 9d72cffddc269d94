#include "audio/files/audio_file_registry.h"

#include <algorithm>
#include <string_view>

#include "audio/files/nist_sphere_rdr_stream.h"
#include "audio/files/wav_rdr_stream.h"
#include "audio/quib_stream.h"
#include "base/counted_ptr.h"

namespace tessarin {

namespace {

using stream_ptr = counted_ptr<CPCMRdrStream>;

/// Kept: directories count, so the extension of "a.b/speech" is ".b/speech", which is not a
/// built-in one; installed readers are asked about such paths.
std::string_view Extension(std::string_view path) {
    const size_t dot = path.rfind('.');
    return dot == std::string_view::npos ? std::string_view{} : path.substr(dot);
}

char ToLowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool IsExtension(std::string_view text, std::string_view lowerCase) {
    return std::ranges::equal(text, lowerCase, {}, ToLowerAscii);
}

template <class Reader> error_code OpenBuiltin(const char* path, stream_ptr* opened) {
    auto reader = counted_ptr<Reader>::Adopt(new Reader);
    const error_code code = reader->Open(path);
    if (code == kNoError) {
        *opened = std::move(reader);
    }
    return code;
}

error_code OpenInstalled(IInstallableAudioFileReader& reader, const char* path,
                         stream_ptr* opened) {
    IInstallableAudioStream* made = nullptr;
    if (const error_code code = reader.OpenFile(path, &made)) {
        return code;
    }
    const auto hostStream = counted_ptr<IInstallableAudioStream>::Adopt(made);
    auto stream = counted_ptr<CQuibStream>::Adopt(new CQuibStream);
    const error_code code = stream->Open2(made); // 2 when the reader made nothing
    if (code == kNoError) {
        *opened = std::move(stream);
    }
    return code;
}

} // namespace

file_format_list::~file_format_list() {
    Remove(nullptr);
}

void file_format_list::Add(IInstallableAudioFileReader* reader) {
    if (reader != nullptr) {
        readers.push_back(reader);
        reader->AddRef();
    }
}

void file_format_list::Remove(IInstallableAudioFileReader* reader) {
    for (size_t i = 0; i < readers.size();) {
        IInstallableAudioFileReader* const entry = readers[i];
        if (reader != nullptr && entry != reader) {
            ++i;
            continue;
        }
        readers.erase(readers.begin() + static_cast<std::ptrdiff_t>(i));
        entry->Release();
    }
}

file_format_list& GetFileFormatList() {
    static file_format_list list;
    return list;
}

error_code OpenAudioFileStream(const char* path, CPCMRdrStream** out) {
    if (out == nullptr) {
        return kInvalidArgument;
    }
    *out = nullptr;
    if (path == nullptr) {
        return kInvalidArgument;
    }
    const std::string_view extension = Extension(path);
    const bool isWav = IsExtension(extension, ".wav");
    stream_ptr opened;
    error_code code = kInvalidFile;
    if (isWav || IsExtension(extension, ".tmp")) {
        code = OpenBuiltin<CWavRdrStream>(path, &opened);
    }
    if (!opened && (isWav || IsExtension(extension, ".sph"))) {
        code = OpenBuiltin<CNistSphereRdrStream>(path, &opened);
    }
    // By index, because a reader of the host may install or remove readers when it is asked.
    const auto& readers = GetFileFormatList().GetReaders();
    for (size_t i = 0; !opened && i < readers.size(); ++i) {
        IInstallableAudioFileReader& reader = *readers[i];
        if (static_cast<uint8_t>(reader.CanOpen(path)) != 0) {
            code = OpenInstalled(reader, path, &opened);
        }
    }
    *out = opened.release();
    return code;
}

} // namespace tessarin
