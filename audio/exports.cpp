#include "audio/audio_file_registry.h"
#include "frame/guarded.h"
#include "tessarin/pcm_stream.h"

using namespace tessarin;

void AddAudioFileFormatReader(IInstallableAudioFileReader* reader) {
    (void)Guarded([&] { GetFileFormatList().Add(reader); });
}

void RemoveAudioFileFormatReader(IInstallableAudioFileReader* reader) {
    (void)Guarded([&] { GetFileFormatList().Remove(reader); });
}
