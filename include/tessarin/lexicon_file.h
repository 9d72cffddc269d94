#pragma once

#include <cstdint>

#include "tessarin/export.h"

// A lexicon file holds a language whole: its lexicon, its letter-to-sound rules or tree, and its
// words for numbers and signs, after a header that says what it is.

namespace tessarin {
class IVisemixTranscriber;
struct TranscriberInfo;
} // namespace tessarin

/// Reads the header of the lexicon file of `size` bytes at `data` into `info`; the header is all
/// that need be there. Where the file names no code page, it is derived from the language and
/// kCodePageKnown is set. Returns 0; 2 without an `info`; 12 when it is not such a file, or a text
/// does not fit its field; 21 for a newer version. `info` is only written with 0.
TESSARIN_API int32_t GetTranscriberInfo(const void* data, uint32_t size,
                                        tessarin::TranscriberInfo* info);

/// Makes a transcriber from the lexicon file of `size` bytes at `data`, which is not kept. Returns
/// 0 with a reference in `*out`, given back with DestroyTranscriber. Otherwise `*out` is null, and
/// the code is 6 for a payload of a form that is not supported, 12 for a malformed file, 21 for a
/// newer version, or 1 without memory.
TESSARIN_API int32_t CreateTranscriberFromLexicon(const void* data, uint32_t size,
                                                  tessarin::IVisemixTranscriber** out);

/// The same from the file at `path`; 10 when it does not open.
TESSARIN_API int32_t CreateTranscriberFromLexiconFile(const char* path,
                                                      tessarin::IVisemixTranscriber** out);
