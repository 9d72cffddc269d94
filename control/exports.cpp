#include <memory>

#include "control/quib_cmd_ctrl.h"
#include "frame/guarded.h"
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
