#include "recognition/live/inline_search.h"

#include <utility>

#include "model/accoustic_hmm.h"

namespace tessarin {

inline_search::inline_search(realtime_audio_chain& audio, const CAccousticHMM& acousticModel,
                             phone_loop<uint8_t> phones, heard_frames& frames)
    : chain(audio), model(acousticModel),
      search(audio.spectral, acousticModel.descriptor.numFeatures, std::move(phones), frames) {}

error_code inline_search::Open() {
    PCMFormat format{};
    error_code code = chain.input.GetFormat(&format);
    bytesPerFrame = uint64_t{format.bitsPerSample} / 8 * format.channels;
    if (code == kNoError) {
        code = meter.Open(format, model.descriptor);
    }
    return code == kNoError ? search.Open() : code;
}

void inline_search::GoOn() {
    for (;;) {
        const std::optional<uint64_t> frames = meter.GetNextFrames();
        if (!frames || chain.input.GetByteLength() < *frames * bytesPerFrame || !search.Read()) {
            return;
        }
        meter.TakeNext();
        if (isSeeded) {
            search.Advance();
        } else {
            search.Seed();
            isSeeded = true;
        }
    }
}

} // namespace tessarin
