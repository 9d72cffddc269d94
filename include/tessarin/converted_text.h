#pragma once

#include <cstdint>

namespace tessarin {

/// A text in the three forms that a host may want: bytes of the local code page, UTF-8 and UTF-16.
/// Immutable; its reference count is not atomic. All pointers are valid while the object lives.
class IQuibConvertedText {
public:
    virtual ~IQuibConvertedText() = default;

    virtual int32_t AddRef() = 0;
    /// Gives one reference back; the last one deletes the object and returns 0.
    virtual int32_t Release() = 0;
    /// The text in the local code page, zero-terminated: what a transcriber reads.
    virtual const char* GetText() = 0;
    virtual const char* GetUtf8Text() = 0;
    virtual const char16_t* GetWideText() = 0;
    /// The encoding that the text came in: 1 local code page, 2 UTF-16 little-endian, 3 UTF-8.
    virtual uint32_t GetEncoding() = 0;
};

} // namespace tessarin
