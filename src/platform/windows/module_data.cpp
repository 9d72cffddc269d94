#include "platform/module_data.h"

#include <windows.h>

namespace tessarin {

std::span<const uint8_t> FindModuleData(const char* module, const char* type, const char* name) {
    const HMODULE image = GetModuleHandleA(module);
    const HRSRC resource = image != nullptr ? FindResourceA(image, name, type) : nullptr;
    const HGLOBAL loaded = resource != nullptr ? LoadResource(image, resource) : nullptr;
    const void* bytes = loaded != nullptr ? LockResource(loaded) : nullptr;
    if (bytes == nullptr) {
        return {};
    }
    return {static_cast<const uint8_t*>(bytes), SizeofResource(image, resource)};
}

} // namespace tessarin
