#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "audio/files/audio_file_registry.h"
#include "audio/pcm_pre_emph_stream.h"
#include "audio/resampled_pcm_stream.h"
#include "base/counted_ptr.h"
#include "support/temp_file.h"

namespace tessarin::fuzz {

constexpr uint32_t kHop = 160;
constexpr int kMostBlocks = 50;

/// Reads blocks until the stream ends, in one of the four ways.
template <class Read> void ReadBlocks(CPCMRdrStream& stream, Read read) {
    stream.Start();
    for (int block = 0; block < kMostBlocks; ++block) {
        uint32_t frames = kHop;
        if (read(&frames) != kNoError || frames == 0) {
            break;
        }
    }
    stream.Stop();
}

/// Opens the bytes as a file whose name ends in `suffix` and reads what comes of it as blocks, by
/// channel, and through the chain that a recognizer builds.
inline void ReadAsAudioFile(const uint8_t* data, size_t size, const char* suffix) {
    static const test::TempFile file(suffix);
    file.Write({data, size});
    CPCMRdrStream* opened = nullptr;
    if (OpenAudioFileStream(file.Path(), &opened) != kNoError) {
        return;
    }
    const auto reader = counted_ptr<CPCMRdrStream>::Adopt(opened);
    PCMFormat format{};
    reader->GetFormat(&format);
    std::vector<float> floats(size_t{kHop} * format.channels);
    std::vector<int16_t> words(floats.size());
    for (const uint32_t channel : {0u, 1u, uint32_t{format.channels}, format.channels + 1u}) {
        ReadBlocks(*reader, [&](uint32_t* frames) {
            return reader->ReadChannelFloat(floats.data(), frames, channel);
        });
        ReadBlocks(*reader, [&](uint32_t* frames) {
            return reader->ReadChannelInt16(words.data(), frames, channel);
        });
    }
    CResampledPCMStream resampled;
    CPCMPreEmphStream emphasized;
    const PCMFormat target{16000u << 16, 16, 1};
    if (resampled.Instantiate(reader.get(), &target, format.channels, 0.8f) == kNoError &&
        emphasized.Instantiate(&resampled, 1, 0.97f) == kNoError) {
        ReadBlocks(emphasized, [&](uint32_t* frames) {
            return emphasized.ReadChannelFloat(floats.data(), frames, 1);
        });
        ReadBlocks(emphasized,
                   [&](uint32_t* frames) { return emphasized.ReadBlock(words.data(), frames); });
    }
}

} // namespace tessarin::fuzz
