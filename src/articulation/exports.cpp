#include <memory>

#include "articulation/phoneme_mixture_articulator.h"
#include "base/guarded.h"
#include "tessarin/articulator.h"

using namespace tessarin;

int32_t CreatePhonemeArticulator(IPhnMixtureArticulator** out, uint32_t /*options*/) {
    if (out == nullptr) {
        return kOutOfMemory;
    }
    *out = nullptr;
    return Guarded([&] {
        *out = std::make_unique<CPhonemeMixtureArticulator>().release();
        return kNoError;
    });
}

void DestroyPhonemeArticulator(IPhnMixtureArticulator* articulator) {
    if (articulator != nullptr) {
        articulator->DestroySelf();
    }
}
