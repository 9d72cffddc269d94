#pragma once

#include <cstdint>
#include <memory>

#include "base/guarded.h"

namespace tessarin {

/// Clears `*out` and has `make` fill an owner, whose object the caller then gets, whatever the
/// code.
template <class T, class Make> int32_t Create(bool hasInput, T** out, Make&& make) {
    if (out == nullptr) {
        return kInvalidArgument;
    }
    *out = nullptr;
    if (!hasInput) {
        return kInvalidArgument;
    }
    return Guarded([&] {
        std::unique_ptr<T> made;
        const error_code code = make(made);
        *out = made.release();
        return code;
    });
}

} // namespace tessarin
