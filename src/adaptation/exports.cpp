#include <memory>

#include "adaptation/mean_bias.h"
#include "adaptation/observation_sample.h"
#include "base/flog.h"
#include "base/guarded.h"
#include "model/accoustic_hmm.h"
#include "platform/floating_point.h"
#include "tessarin/model_adaptation.h"

using namespace tessarin;

int32_t CreateAdaptedAccHMM(const CAccousticHMM* model, IObservationStream* observations,
                            float leastGain, float* gain, CAccousticHMM** out) {
    flog scope("CreateAdaptedAccHMM");
    MaskFloatUnderflow();
    if (out == nullptr) {
        return kInvalidArgument;
    }
    *out = nullptr;
    if (model == nullptr || observations == nullptr) {
        return kInvalidArgument;
    }
    return Guarded([&]() -> error_code {
        ObservationSample sample(static_cast<size_t>(model->descriptor.numFeatures));
        const error_code code = sample.Read(*observations);
        if (code != kNoError) {
            return code;
        }
        const mean_bias bias = FindMeanBias(*model, sample.GetValues());
        if (gain != nullptr) {
            *gain = static_cast<float>(bias.gain);
        }
        if (bias.gain >= static_cast<double>(leastGain)) {
            std::unique_ptr<CAccousticHMM> adapted = model->Copy();
            AddMeanBias(bias, *adapted);
            *out = adapted.release();
        }
        return kNoError;
    });
}
