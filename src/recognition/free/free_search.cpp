#include "recognition/free/free_search.h"

#include "model/accoustic_hmm.h"

namespace tessarin {

error_code PrepareFreeSearch(const CAccousticHMM& model, IObservationStream& stream,
                             TArray<uint32_t>& path, TArray<float>& energies) {
    constexpr int32_t kMaxStates = 65535;
    if (model.GetTotalStates() > kMaxStates) {
        return kOutOfRange;
    }
    const uint32_t frames = stream.GetNumObservations();
    if (frames > INT32_MAX || path.SetSize(static_cast<int32_t>(frames), 0) == 0) {
        return kOutOfMemory;
    }
    if (energies.GetSize() < path.GetSize() && energies.SetSize(path.GetSize(), 0) == 0) {
        return kOutOfMemory;
    }
    return kNoError;
}

} // namespace tessarin
