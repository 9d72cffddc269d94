#pragma once

#include <cstdint>
#include <memory>

namespace tessarin {

/// Frees the bytes of a resource unless they stand in a module.
struct release_resource {
    bool copied = false;
    void operator()(const uint8_t* bytes) const {
        if (copied) {
            delete[] bytes;
        }
    }
};
using resource_bytes = std::unique_ptr<const uint8_t[], release_resource>;

/// Read-only data in a loaded module, or in the program when `module` is null: `*size` bytes in
/// place, valid as long as the module stays loaded, or a copy of them when `copy`. Null when they
/// are not there.
resource_bytes LoadModuleResource(const char* module, const char* type, const char* name,
                                  int32_t* size, bool copy);

} // namespace tessarin
