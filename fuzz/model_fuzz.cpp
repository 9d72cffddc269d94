#include <cstddef>
#include <cstdint>
#include <sstream>
#include <vector>

#include "model/accoustic_hmm.h"
#include "tessarin/acoustic_model.h"

using namespace tessarin;

/// A model image from outside: it reads or it answers a code; what it gives can be used.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    char errorText[kModelErrorTextSize];
    CAccousticHMM* model = nullptr;
    if (CreateAccHMM(data, static_cast<uint32_t>(size), errorText, &model) == 0) {
        const std::vector<float> x(static_cast<size_t>(model->descriptor.numFeatures), 1.0f);
        for (int32_t state = 0; state < model->GetTotalStates(); ++state) {
            model->GetStateProbability(x.data(), state);
            model->GetLabel(state, true);
        }
        static_cast<void>(model->CalcLogTransitions());
        std::ostringstream text;
        model->WriteTextDump(text);
    }
    DestroyAccHMM(model);
    return 0;
}
