#include "platform/module_data.h"

#include <cstring>
#include <dlfcn.h>
#include <memory>
#include <string>

namespace tessarin {

namespace {

struct close_module {
    void operator()(void* module) const { dlclose(module); }
};

} // namespace

std::span<const uint8_t> FindModuleData(const char* module, const char* type, const char* name) {
    // The handle may go at once: the module stays with whoever loaded it.
    const std::unique_ptr<void, close_module> image(dlopen(module, RTLD_LAZY | RTLD_NOLOAD));
    if (image == nullptr || type == nullptr || name == nullptr) {
        return {};
    }
    const std::string symbol = std::string("tessarin_") + type + "_" + name;
    const void* bytes = dlsym(image.get(), symbol.c_str());
    const void* size = dlsym(image.get(), (symbol + "_size").c_str());
    if (bytes == nullptr || size == nullptr) {
        return {};
    }
    uint32_t count = 0;
    std::memcpy(&count, size, sizeof(count));
    return {static_cast<const uint8_t*>(bytes), count};
}

} // namespace tessarin
