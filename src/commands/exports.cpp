#include <memory>

#include "base/guarded.h"
#include "commands/quib_accoustic_cmd_ctrl.h"
#include "commands/quib_cmd_ctrl.h"
#include "tessarin/acoustic_command_controller.h"
#include "tessarin/command_controller.h"

using namespace tessarin;

int32_t CreateQuibCmdCtrl(void* /*reserved*/, CAccousticHMM* model, float energyFloor,
                          IQuibCmdCtrl** out) {
    if (out == nullptr) {
        return kOutOfMemory;
    }
    *out = nullptr;
    if (model == nullptr) {
        return kInvalidArgument;
    }
    return Guarded([&] {
        *out = std::make_unique<CQuibCmdCtrl>(*model, energyFloor).release();
        return kNoError;
    });
}

// Kept: the controller is the host's even when live audio cannot be set up; it still compares
// recordings.
int32_t CreateQuibAcousticCmdCtrl(void* /*reserved*/, CAccousticHMM* model, float energyFloor,
                                  IQuibAcousticCmdCtrl** out) {
    if (out == nullptr) {
        return kOutOfMemory;
    }
    *out = nullptr;
    if (model == nullptr) {
        return kInvalidArgument;
    }
    return Guarded([&] {
        auto made = std::make_unique<CQuibAccousticCmdCtrl>();
        const error_code code = made->InitFeatures(model, energyFloor);
        *out = made.release();
        return code;
    });
}
