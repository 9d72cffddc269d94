#include <cstddef>
#include <memory>
#include <new>

#include "base/flog.h"
#include "base/guarded.h"
#include "features/decibel_power.h"
#include "features/noise_gate_splice.h"
#include "features/observation_chain.h"
#include "features/spectral_data_source.h"
#include "features/spectral_stream.h"
#include "model/accoustic_hmm.h"
#include "platform/floating_point.h"
#include "tessarin/observation_stream.h"
#include "tessarin/spectral_data_source.h"

using namespace tessarin;

namespace {

template <class Audio>
int32_t CreateObservationStream(Audio* audio, CAccousticHMM* model, IObservationStream** out) {
    if (out == nullptr) {
        return kInvalidArgument;
    }
    *out = nullptr;
    if (audio == nullptr || model == nullptr) {
        return kInvalidArgument;
    }
    return Guarded([&] {
        std::unique_ptr<CSpectralStream> stream;
        const error_code code = OpenObservationChain(audio, model->descriptor, stream);
        *out = stream.release();
        return code;
    });
}

} // namespace

int32_t CreateObservationStreamFromAudioFile(const char* path, CAccousticHMM* model,
                                             IObservationStream** out) {
    flog scope("CreateObservationStreamFromAudioFile");
    MaskFloatUnderflow();
    return CreateObservationStream(path, model, out);
}

int32_t CreateObservationStreamFromQuibStream(IQuibPCMStream* stream, CAccousticHMM* model,
                                              IObservationStream** out) {
    flog scope("CreateObservationStreamFromQuibStream");
    MaskFloatUnderflow();
    return CreateObservationStream(stream, model, out);
}

void DestroyObservationStream(IObservationStream* stream) {
    flog scope("DestroyObservationStream");
    delete stream;
}

float CalcDecibalPower(const float* samples, float* previous, int32_t count) {
    if (samples == nullptr || previous == nullptr || count < 0) {
        return 0.0f;
    }
    return DecibelPower({samples, static_cast<size_t>(count)}, *previous);
}

int32_t AddNoiseGate(IObservationStream* stream, float thresholdDb, float percentile,
                     int32_t rampMs, int32_t minQuietMs, int32_t maxBlipMs) {
    CSpectralStream* const spectral = CSpectralStream::Find(stream);
    if (spectral == nullptr) {
        return kNotAvailable;
    }
    return Guarded([&] {
        return InsertNoiseGate(*spectral, thresholdDb, percentile, rampMs, minQuietMs, maxBlipMs);
    });
}

int32_t CreateSpectralDataSource(ISpectralDataSource** out) {
    if (out == nullptr) {
        return kInvalidArgument;
    }
    *out = new (std::nothrow) CSpectralDataSource;
    return *out != nullptr ? kNoError : kOutOfMemory;
}

void DestroySpectralDataSource(ISpectralDataSource* source) {
    if (source != nullptr) {
        source->Destroy();
    }
}
