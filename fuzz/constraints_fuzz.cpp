#include <cstddef>
#include <cstdint>

#include "support/tiny_model.h"
#include "tessarin/language_constraints.h"

using namespace tessarin;

/// Phoneme statistics and duration limits, both made from any text. Its first byte chooses.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static CAccousticHMM* model = test::tiny_model{}.Make().release();
    if (size == 0) {
        return 0;
    }
    const char* text = reinterpret_cast<const char*>(data + 1);
    const int32_t length = static_cast<int32_t>(size - 1);
    if (data[0] % 3 == 2) {
        LoadPhoneConstraintsIntoHMM(model, text, length, 0);
    } else {
        LoadTrigramIntoHMM(model, text, length, data[0] % 3);
    }
    model->GetPhoneLimitMs("AA");
    model->GetPhoneDurationFactor(1, 1, 5);
    return 0;
}
