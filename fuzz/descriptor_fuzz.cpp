// Feature descriptors from any bytes: what reads is written, shown and analysed with.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <vector>

#include "features/spectral_feature_descriptor.h"
#include "features/spectral_stream.h"

#include "features/scripted_pcm_stream.h"

using namespace tessarin;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr int32_t kMaxFeatures = 4096; // the room that a host of the stream would have
    constexpr int32_t kMaxWindow = 4096;   // larger ones only cost time

    CSpectralFeatureDescriptor descriptor;
    const uint8_t* cursor = data;
    auto remaining = static_cast<uint32_t>(size);
    if (!descriptor.Read(&cursor, &remaining)) {
        return 0;
    }
    if (cursor + remaining != data + size) {
        std::abort();
    }
    std::ostringstream text;
    descriptor.WriteText(text);
    if (descriptor.numFeatures > kMaxFeatures || descriptor.windowSize > kMaxWindow) {
        return 0;
    }
    test::ScriptedPcmStream pcm(std::vector<float>(3000, 1000.0f));
    CSpectralStream stream;
    static_cast<void>(stream.Init2(&pcm, 1, &descriptor));
    std::vector<float> features(static_cast<size_t>(descriptor.numFeatures));
    float energy = 0;
    for (int i = 0; i < 4; ++i) {
        static_cast<void>(stream.GetObservation(features.data(), &energy));
    }
    return 0;
}
