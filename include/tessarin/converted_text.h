#pragma once

#include <cstdint>

#include "tessarin/export.h"

namespace tessarin {

class IVisemixTranscriber;
struct TranscriberInfo;

/// What IQuibConvertedText::GetEncoding says.
enum text_encoding : uint32_t {
    kLocalText = 1, ///< bytes of the local code page
    kUtf16Text = 2, ///< little-endian
    kUtf8Text = 3,
};

/// A text in the three forms that a host may want: bytes of the local code page, UTF-8 and UTF-16.
/// Immutable; its reference count is not atomic. All pointers are valid while the object lives.
class IQuibConvertedText {
public:
    virtual ~IQuibConvertedText() = default;

    /// Takes another reference and returns how many there are.
    virtual int32_t AddRef() = 0;
    /// Gives one reference back; the last one deletes the object and returns 0.
    virtual int32_t Release() = 0;
    /// The text in the local code page, zero-terminated: what a transcriber reads.
    virtual const char* GetText() = 0;
    /// The text in UTF-8, zero-terminated.
    virtual const char* GetUtf8Text() = 0;
    /// The text in UTF-16 of this machine's byte order, zero-terminated.
    virtual const char16_t* GetWideText() = 0;
    /// The text_encoding that the text came in.
    virtual uint32_t GetEncoding() = 0;
};

} // namespace tessarin

/// Converts a text for `transcriber`, with the locale and the code page of its record; see
/// ConvertTextForAlignment2. Null when `transcriber` is null.
TESSARIN_API tessarin::IQuibConvertedText*
ConvertTextForAlignment(tessarin::IVisemixTranscriber* transcriber, char* text, int32_t length,
                        uint32_t encoding);

/// Converts the `length` bytes at `text` into all forms. A mark at the beginning decides over
/// `encoding`: EF BB BF means UTF-8, FF FE UTF-16; a value that is not a text_encoding means local
/// text. `text` must be writable: UTF-16 text with the bytes 13 10 in one unit gets a single
/// carriage return there. The local code page is that of `info->locale` where the system knows it,
/// else of `info->code_page`: 1250, 1251, or 1252 for any other and for a null `info`. The wide
/// form of local text, and the local form of wide text, end at the first zero.
///
/// Returns the text with one reference, which the caller gives back by Release; null when it has a
/// character that the code page lacks. Text that is not valid throws utf8::exception out of this
/// function, which a host reports as kInvalidUtf8; a locale that was set for the call then stays
/// set. The locale is the whole process's for the length of the call.
TESSARIN_API tessarin::IQuibConvertedText*
ConvertTextForAlignment2(const tessarin::TranscriberInfo* info, char* text, int32_t length,
                         uint32_t encoding);
