#pragma once

#include <cstdint>

namespace tessarin {

/// Intrusive reference count that starts at 1. The count is a plain integer: an object that two
/// threads share is counted under its owner's lock.
class CRefCounter {
public:
    CRefCounter() = default;
    CRefCounter(const CRefCounter&) = delete;
    CRefCounter& operator=(const CRefCounter&) = delete;
    virtual ~CRefCounter() = default;

    /// Adds a reference and returns the new count.
    virtual int32_t AddRef();

    /// Takes a reference away and returns the new count; the last one destroys the object and
    /// returns 0.
    virtual int32_t Release();

private:
    int32_t count = 1;
};

} // namespace tessarin
