#pragma once

#include <new>
#include <type_traits>
#include <utility>

#include "tessarin/error_codes.h"

namespace tessarin {

/// Runs the body of a function that a host or the system calls, and turns what it throws into a
/// code: exhausted memory into kOutOfMemory, anything else into kException. A body that returns
/// nothing counts as successful.
template <class Body> [[nodiscard]] error_code Guarded(Body&& body) {
    try {
        if constexpr (std::is_void_v<std::invoke_result_t<Body>>) {
            std::forward<Body>(body)();
            return kNoError;
        } else {
            return std::forward<Body>(body)();
        }
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    } catch (...) {
        return kException;
    }
}

} // namespace tessarin
