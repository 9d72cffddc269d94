#include "base/module_resource.h"

#include <algorithm>
#include <span>

#include "platform/module_data.h"

namespace tessarin {

resource_bytes LoadModuleResource(const char* module, const char* type, const char* name,
                                  int32_t* size, bool copy) {
    const std::span<const uint8_t> found = FindModuleData(module, type, name);
    if (found.data() == nullptr || found.size() > uint32_t{INT32_MAX}) {
        return nullptr;
    }
    *size = static_cast<int32_t>(found.size());
    if (!copy) {
        return {found.data(), release_resource{false}};
    }
    auto bytes = std::make_unique_for_overwrite<uint8_t[]>(found.size());
    std::ranges::copy(found, bytes.get());
    return {bytes.release(), release_resource{true}};
}

} // namespace tessarin
