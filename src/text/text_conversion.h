#pragma once

#include <cstdint>

#include "base/counted_ptr.h"
#include "tessarin/converted_text.h"

namespace tessarin {

struct TranscriberInfo;

/// The body of ConvertTextForAlignment2: `text` may be written to, `info` may be null. Null when
/// the text has a character that the local code page lacks. Throws utf8::exception.
counted_ptr<IQuibConvertedText> ConvertText(const TranscriberInfo* info, char* text, int32_t length,
                                            uint32_t encoding);

} // namespace tessarin
