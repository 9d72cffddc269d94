#include "apps/tessarin/readers/live_audio.h"

#include <cstdio>

#include <soxr.h>

#include "apps/tessarin/console/failure.h"

namespace {

constexpr uint32_t kBlocksPerSecond = 50;

std::string Bytes(const std::vector<int16_t>& samples, size_t count) {
    return {reinterpret_cast<const char*>(samples.data()), count * sizeof(int16_t)};
}

} // namespace

struct LiveAudio::converter {
    ~converter() { soxr_delete(resampler); }

    soxr_t resampler = nullptr;
    std::vector<int16_t> output;
};

LiveAudio::LiveAudio(uint32_t rateHz) : block(rateHz / kBlocksPerSecond) {
    if (rateHz == kLiveRateHz) {
        return;
    }
    toEngineRate = std::make_unique<converter>();
    const soxr_io_spec_t format = soxr_io_spec(SOXR_INT16_I, SOXR_INT16_I);
    toEngineRate->resampler =
        soxr_create(rateHz, kLiveRateHz, 1, nullptr, &format, nullptr, nullptr);
    // Twice a block, as the converter holds back at first and gives more later.
    toEngineRate->output.resize(2 * kLiveRateHz / kBlocksPerSecond);
    if (toEngineRate->resampler == nullptr) {
        throw Failure(kExitFailed, "--rate: no resampler for this sample rate");
    }
}

LiveAudio::~LiveAudio() = default;

bool LiveAudio::ReadBlock(std::string* samples) {
    samples->clear();
    if (ended) {
        return false;
    }
    const size_t frames = std::fread(block.data(), sizeof(int16_t), block.size(), stdin);
    ended = frames < block.size();
    if (toEngineRate) {
        Convert(frames, samples);
    } else {
        *samples = Bytes(block, frames);
    }
    return true;
}

void LiveAudio::Convert(size_t frames, std::string* samples) {
    std::vector<int16_t>& output = toEngineRate->output;
    size_t used = 0;
    size_t made = 0;
    const auto convert = [&](const int16_t* input, size_t count) {
        const bool failed = soxr_process(toEngineRate->resampler, input, count, &used,
                                         output.data(), output.size(), &made) != nullptr;
        *samples += Bytes(output, failed ? 0 : made);
    };
    for (size_t place = 0; place < frames; place += used) {
        convert(block.data() + place, frames - place);
        if (used == 0 && made == 0) {
            break;
        }
    }
    if (ended) {
        do { // what the converter still holds
            convert(nullptr, 0);
        } while (made > 0);
    }
}
