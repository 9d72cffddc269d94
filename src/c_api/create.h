#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

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

/// Copies as much of `text` as the caller has room for; `reason` may be null.
inline void WriteReason(std::string_view text, char* reason, uint32_t size) {
    if (reason != nullptr && size > 0) {
        reason[text.copy(reason, size - 1)] = '\0';
    }
}

/// The items of a list that may be null, and how many they are.
template <class T> const T* Items(const std::vector<T>* items, uint32_t* count) {
    if (count != nullptr) {
        *count = items != nullptr ? static_cast<uint32_t>(items->size()) : 0;
    }
    return items == nullptr || items->empty() ? nullptr : items->data();
}

} // namespace tessarin
