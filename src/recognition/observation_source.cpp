#include "recognition/observation_source.h"

#include <algorithm>
#include <cassert>

#include "features/spectral_stream.h"
#include "tessarin/observation_stream.h"

namespace tessarin {
namespace {

/// Streams of hosts have always had this room after the features that they are asked for.
constexpr size_t kSpareValues = 3;

} // namespace

observation_source::observation_source(IObservationStream& observations, int32_t featureCount)
    : stream(observations), numFeatures(std::max(featureCount, 0)),
      width(static_cast<size_t>(numFeatures) + kSpareValues), buffer(kSlots * width) {}

error_code observation_source::Open(TArray<float>* energies) {
    const CSpectralStream* const spectral = CSpectralStream::Find(&stream);
    if (spectral != nullptr && spectral->GetFeatureCount() > numFeatures) {
        return kInvalidArgument;
    }
    count = stream.GetNumObservations();
    if (count > INT32_MAX) {
        return kOutOfMemory;
    }
    kept = energies;
    const auto wanted = static_cast<int32_t>(count);
    const bool fits = kept == nullptr || kept->GetSize() >= wanted || kept->SetSize(wanted, 0) != 0;
    return fits ? kNoError : kOutOfMemory;
}

error_code observation_source::Next() {
    if (delivered == received) {
        const error_code code = failure != kNoError ? failure : Read();
        failure = kNoError;
        if (code != kNoError) {
            return code;
        }
    }
    if (kept != nullptr && delivered < count) {
        (*kept)[static_cast<int32_t>(delivered)] = energyOf[delivered % kSlots];
    }
    ++delivered;
    return kNoError;
}

const float* observation_source::LookAhead(uint32_t distance) {
    assert(distance >= 1 && distance <= kMostAhead);
    const uint64_t wanted = delivered + distance;
    while (received < wanted && received < count && failure == kNoError) {
        failure = Read();
    }
    return received >= wanted ? Slot(wanted - 1) : nullptr;
}

error_code observation_source::Read() {
    const uint64_t slot = received % kSlots;
    const error_code code = stream.GetObservation(buffer.data() + slot * width, &energyOf[slot]);
    received += code == kNoError ? 1 : 0;
    return code;
}

} // namespace tessarin
