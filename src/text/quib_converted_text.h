#pragma once

#include <cstdint>
#include <string>

#include "tessarin/converted_text.h"

namespace tessarin {

/// A host's text in its three forms. Begins with no reference.
class CQuibConvertedText final : public IQuibConvertedText {
public:
    /// Makes the UTF-8 form from `wideText`; an unpaired surrogate throws utf8::invalid_utf16.
    CQuibConvertedText(std::string narrowText, std::u16string wideText, uint32_t ofEncoding);

    int32_t AddRef() override;
    int32_t Release() override;
    const char* GetText() override { return narrow.c_str(); }
    const char* GetUtf8Text() override { return utf8.c_str(); }
    const char16_t* GetWideText() override { return wide.c_str(); }
    uint32_t GetEncoding() override { return encoding; }

private:
    ~CQuibConvertedText() override = default;

    uint32_t encoding;
    int32_t references = 0;
    std::u16string wide;
    std::string narrow;
    std::string utf8;
};

} // namespace tessarin
