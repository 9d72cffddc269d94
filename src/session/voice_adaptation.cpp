#include "session/voice_adaptation.h"

#include <span>

#include "tessarin/model_adaptation.h"

namespace tessarin {

error_code AdaptToVoice(const search_input& input, adapted_model& out) {
    tessarin_search_options options{};
    error_code code = ReadSearchOptions(input.options, options);
    if (code != kNoError || options.adapt_mode == TESSARIN_ADAPT_OFF) {
        return code;
    }
    std::span<const int16_t> stretch;
    code = FindStretch(input.audio, options.from_ms, options.to_ms, stretch);
    if (code != kNoError) {
        return code;
    }
    SampleStream stream(stretch, input.audio.rateHz);
    IObservationStream* opened = nullptr;
    code = CreateObservationStreamFromQuibStream(&stream, input.model.hmm.get(), &opened);
    const observations_owner observations(opened);
    if (code != kNoError) {
        return code;
    }
    const float leastGain = options.adapt_mode == TESSARIN_ADAPT_ON ? 0.0f : kKnownVoiceGain;
    CAccousticHMM* adapted = nullptr;
    code = CreateAdaptedAccHMM(input.model.hmm.get(), observations.get(), leastGain, &out.gain,
                               &adapted);
    out.hmm.reset(adapted);
    return code;
}

} // namespace tessarin
