#include <cstddef>
#include <cstdint>

#include "audio_file_reading.h"

// A RIFF WAVE file from outside: it reads to its end or answers a code.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tessarin::fuzz::ReadAsAudioFile(data, size, ".tmp");
    return 0;
}
