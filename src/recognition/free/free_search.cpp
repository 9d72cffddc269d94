#include "recognition/free/free_search.h"

#include "model/accoustic_hmm.h"

namespace tessarin {

error_code PrepareFreeSearch(const CAccousticHMM& model, observation_source& source,
                             TArray<uint32_t>& path, TArray<float>& energies) {
    constexpr int32_t kMaxStates = 65535;
    if (model.GetTotalStates() > kMaxStates) {
        return kOutOfRange;
    }
    if (const error_code code = source.Open(&energies); code != kNoError) {
        return code;
    }
    return path.SetSize(static_cast<int32_t>(source.GetCount()), 0) != 0 ? kNoError : kOutOfMemory;
}

} // namespace tessarin
