#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// The rate at which the engine's models analyse.
inline constexpr uint32_t kLiveRateHz = 16000;

/// 16-bit mono samples on standard input, brought to kLiveRateHz.
class LiveAudio {
public:
    /// Throws Failure.
    explicit LiveAudio(uint32_t rateHz);
    ~LiveAudio();

    /// Waits for the next 20 ms or the end, and replaces `samples` by them; a converted block may
    /// be empty. False after the last block.
    bool ReadBlock(std::string* samples);

private:
    struct converter;

    void Convert(size_t frames, std::string* samples);

    std::vector<int16_t> block;
    std::unique_ptr<converter> toEngineRate; ///< null when the rate fits
    bool ended = false;
};
