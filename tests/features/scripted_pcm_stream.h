#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

#include "audio/files/pcm_rdr_stream.h"

namespace tessarin::test {

/// A mono stream of given samples, a member or local of the test.
class ScriptedPcmStream : public CPCMRdrStream {
public:
    explicit ScriptedPcmStream(std::vector<float> audio, uint32_t rateHz = 16000)
        : samples(std::move(audio)) {
        SetRate(rateHz);
        numSamples = static_cast<uint32_t>(samples.size());
    }

    void SetRate(uint32_t rateHz) { format = {rateHz << 16, 16, 1}; }

    const char* GetStreamName() override { return "AudioReader"; }
    CPCMRdrStream* GetSourceStream() override { return nullptr; }
    error_code SetSourceStream(CPCMRdrStream*) override { return kNotAvailable; }
    error_code Start() override {
        place = 0;
        return kNoError;
    }
    error_code ReadBlock(void*, uint32_t* frames) override {
        *frames = 0;
        return kNotAvailable;
    }
    error_code ReadChannelFloat(float* buffer, uint32_t* frames, uint32_t) override {
        if (place >= failFrom) {
            *frames = 0;
            return kFileInUse;
        }
        const size_t delivered = std::min<size_t>(*frames, samples.size() - place);
        std::copy_n(samples.begin() + static_cast<std::ptrdiff_t>(place), delivered, buffer);
        place += delivered;
        *frames = static_cast<uint32_t>(delivered);
        return kNoError;
    }

    size_t failFrom = std::numeric_limits<size_t>::max();

private:
    std::vector<float> samples;
    size_t place = 0;
};

} // namespace tessarin::test
