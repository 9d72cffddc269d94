#include <fstream>
#include <locale>
#include <memory>
#include <sstream>

#include "base/flog.h"
#include "base/guarded.h"
#include "model/accoustic_hmm.h"
#include "platform/floating_point.h"
#include "platform/stdio_file.h"
#include "tessarin/acoustic_model.h"
#include "tessarin/language_constraints.h"

namespace {

using namespace tessarin;

/// Opens a text whose numbers read the same under any locale. False for what cannot be read, such
/// as a directory.
bool OpenText(const char* path, std::ifstream& text) {
    if (path == nullptr) {
        return false;
    }
    text.imbue(std::locale::classic());
    text.open(PathOf(path));
    text.peek();
    return text.is_open() && !text.bad();
}

bool OpenText(const char* bytes, int32_t length, std::istringstream& text) {
    if (bytes == nullptr || length < 0) {
        return false;
    }
    text.imbue(std::locale::classic());
    text.str(std::string(bytes, static_cast<size_t>(length)));
    return true;
}

template <class Read> int32_t Load(bool isOpen, CAccousticHMM* model, Read&& read) {
    if (!isOpen) {
        return kFileNotFound;
    }
    if (model == nullptr) {
        return kInvalidArgument;
    }
    return read() ? kNoError : kInvalidFile;
}

} // namespace

int32_t CreateAccHMM(const void* data, uint32_t size, char* errorText, CAccousticHMM** out) {
    flog scope("CreateAccHMM");
    MaskFloatUnderflow();
    if (out == nullptr) {
        return kInvalidArgument;
    }
    *out = nullptr;
    return Guarded([&] {
        auto model = std::make_unique<CAccousticHMM>();
        auto cursor = static_cast<const uint8_t*>(data);
        uint32_t remaining = data != nullptr ? size : 0;
        if (!model->Read(&cursor, &remaining, errorText)) {
            return kInvalidFile;
        }
        *out = model.release();
        return kNoError;
    });
}

void DestroyAccHMM(CAccousticHMM* model) {
    flog scope("DestroyAccHMM");
    delete model;
}

int32_t LoadTrigramFileIntoHMM(CAccousticHMM* model, const char* path, uint8_t normalise) {
    flog scope("LoadTrigramFileIntoHMM");
    MaskFloatUnderflow();
    return Guarded([&] {
        std::ifstream text;
        return Load(OpenText(path, text), model,
                    [&] { return model->ReadTrigrams(text, normalise != 0); });
    });
}

int32_t LoadTrigramIntoHMM(CAccousticHMM* model, const char* bytes, int32_t length,
                           uint8_t normalise) {
    flog scope("LoadTrigramIntoHMM");
    MaskFloatUnderflow();
    return Guarded([&] {
        std::istringstream text;
        return Load(OpenText(bytes, length, text), model,
                    [&] { return model->ReadTrigrams(text, normalise != 0); });
    });
}

int32_t LoadPhoneConstraintsFileIntoHMM(CAccousticHMM* model, const char* path, uint32_t) {
    flog scope("LoadPhoneConstraintsFileIntoHMM");
    MaskFloatUnderflow();
    return Guarded([&] {
        std::ifstream text;
        return Load(OpenText(path, text), model, [&] { return model->ReadConstraints(text); });
    });
}

int32_t LoadPhoneConstraintsIntoHMM(CAccousticHMM* model, const char* bytes, int32_t length,
                                    uint32_t) {
    flog scope("LoadPhoneConstraintsIntoHMM");
    MaskFloatUnderflow();
    return Guarded([&] {
        std::istringstream text;
        return Load(OpenText(bytes, length, text), model,
                    [&] { return model->ReadConstraints(text); });
    });
}
