#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// A recording as a browser plays it: 16 bits, one channel.
struct page_audio {
    int sampleRate = 0; ///< Hz: that of the recording, or 16000 where that is lower
    std::vector<int16_t> samples;
};

/// Reads `path`, whatever its format. `channel` counts from 1; 0 means the mean of all channels.
/// Throws Failure, also for a recording that is too long for a page.
page_audio ReadPageAudio(const std::string& path, int channel);

/// The bytes of a WAV file with the plain header of 44 bytes.
std::string MakeWav(const page_audio& audio);
