#include <span>
#include <utility>

#include "base/little_endian.h"
#include "model/accoustic_hmm.h"
#include "model/model_image.h"
#include "model/owned_file.h"

namespace tessarin {
namespace {

// What the file does not take is seen by ferror in the end.
template <class T> void Put(std::FILE* file, T value) {
    const T stored = ToLittleEndian(value);
    std::fwrite(&stored, sizeof(stored), 1, file);
}

void PutAll(std::FILE* file, std::span<const float> values) {
    for (const float value : values) {
        Put(file, value);
    }
}

void PutText(std::FILE* file, const std::string& text) {
    std::fwrite(text.c_str(), text.size() + 1, 1, file);
}

void PutState(std::FILE* file, const CAccousticHMMState& state) {
    for (const CGaussMixture& mixture : state.mixtures) {
        Put(file, mixture.weight);
        PutAll(file, mixture.mean);
        PutAll(file, mixture.inverseCovariance);
        Put(file, mixture.gConst);
    }
    PutAll(file, state.transitions);
}

} // namespace

bool CAccousticHMM::Write(const char* path) {
    owned_file file = OpenFile(path, "wb+");
    if (!file) {
        return false;
    }
    Put(file.get(), kModelMagic);
    Put(file.get(), kModelVersion);
    Put(file.get(), numModels);
    Put(file.get(), numStates);
    Put(file.get(), numMixtures);
    descriptor.Write(file.get());
    for (const CSingleAccHmm& model : models) {
        Put(file.get(), kModelMagic);
        for (const CAccousticHMMState& state : model.states) {
            PutState(file.get(), state);
        }
    }
    Put(file.get(), kModelMagic);
    PutAll(file.get(), {transitions[0], transitions.GetRows() * transitions.GetColumns()});
    for (const std::string& label : labels) {
        PutText(file.get(), label);
    }
    for (const std::optional<std::string>& info : {phonemeInfo1, phonemeInfo2}) {
        if (info) {
            PutText(file.get(), *info);
        }
    }
    return FinishFile(std::move(file));
}

} // namespace tessarin
