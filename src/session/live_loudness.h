#pragma once

#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

namespace tessarin {

/// The loudness of live audio: measures what is pushed, and keeps what was not passed. One thread
/// may push while another reads.
class LiveLoudness {
public:
    /// Begins, once.
    void Open(uint32_t samplesPerSecond) { rateHz = samplesPerSecond; }
    /// The next samples of the channel that is heard.
    void Push(std::span<const int16_t> samples);
    /// Replaces `steps` by the loudness of each 10 ms from `fromMs`, a multiple of 10, to the end
    /// of what was pushed, and forgets what was before. Times must not go back.
    void CopyFrom(int64_t fromMs, std::vector<float>& steps);

private:
    std::mutex lock;
    uint32_t rateHz = 0;
    std::vector<int16_t> begun; ///< samples of a second whose last step is not complete
    size_t measured = 0;        ///< steps of that second
    int64_t firstStep = 0;      ///< of those that are kept
    std::vector<float> kept;
};

} // namespace tessarin
