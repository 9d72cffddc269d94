#pragma once

#include "base/counted_ptr.h"
#include "text/transcriber.h"

#include <cstdint>

namespace tessarin {

/// A transcriber with the built-in English language module and a lexicon of the `length` bytes at
/// `lexiconText`, which may be null.
counted_ptr<CTranscriber> MakeDefaultTranscriber(const char* lexiconText, int32_t length);

} // namespace tessarin
