#pragma once

#include "base/counted_ptr.h"
#include "tessarin/error_codes.h"
#include "tessarin/transcriber.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace tessarin {

class CCmDict;
class CTranscriber;
template <class Char> class CGraphemeToPhoneRules;

// A lexicon file is a header, a packed block and bytes without meaning. The plain bytes of the
// block are a letter-to-sound section, the language once more, and a lexicon.

/// Reads the header at `*position`, which is moved past it, as `*remaining` is. What the file
/// leaves out is empty or zero. On a failure, kInvalidFile or kNewerVersion, nothing changes.
[[nodiscard]] error_code ReadLexiconHeader(const uint8_t** position, uint32_t* remaining,
                                           TranscriberInfo* info, std::string* infoString);

/// Makes a transcriber from a lexicon file in memory. On a failure `out` stays as it was.
[[nodiscard]] error_code LoadTranscriber(const void* data, uint32_t size,
                                         counted_ptr<CTranscriber>& out);

/// The same for an editor: takes any file whose payload reads, and lends the lexicon, which
/// belongs to the transcriber. Answers kOutOfMemory or kException for what is thrown. On a failure
/// both are null.
[[nodiscard]] error_code LoadTranscriberAndDict(const void* data, uint32_t size,
                                                counted_ptr<CTranscriber>& outTranscriber,
                                                CCmDict*& outDict);

/// Writes a lexicon file, in place of an old one only when it is whole. The fields that
/// `info.flags` leaves out are not written. kFileLocked when there is no way to write at `path`,
/// kWriteFailed when the bytes do not all arrive, kInvalidFile when the parts are too large.
[[nodiscard]] error_code WriteLexiconFile(const TranscriberInfo& info,
                                          const CGraphemeToPhoneRules<char>& rules,
                                          const CCmDict& dict, const char* path,
                                          std::string_view infoString);

} // namespace tessarin
