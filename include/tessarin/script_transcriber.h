#pragma once

#include <cstdint>

#include "tessarin/export.h"
#include "tessarin/transcriber.h"

struct tessarin_script;

namespace tessarin {

/// A transcriber whose tokens have all readings of a script as alternatives, so that in a search
/// the recording makes the choice: nine or nine o'clock.
class IScriptTranscriber : public IVisemixTranscriber {
public:
    /// What was said for the token that begins at the byte `textStart` of the last text, if its
    /// phonemes, without silence, are `phonemes`: the words of a reading, zero-terminated. The
    /// first reading stands for phonemes that none of them has. Empty for a token with one reading.
    /// Valid until the next Transcribe.
    virtual const char* FindReading(uint32_t textStart, const char* phonemes) = 0;

protected:
    ~IScriptTranscriber() = default;
};

} // namespace tessarin

/// Makes a transcriber that says the text of `script` as `inner` does, with all of the script's
/// readings. Another text is said as by `inner`. It takes a reference to `inner`, and a copy of the
/// script. `*out` has one reference, given back with DestroyTranscriber. Returns 0; 1; 2 for a null
/// argument.
TESSARIN_API int32_t CreateScriptTranscriber(tessarin::IVisemixTranscriber* inner,
                                             const tessarin_script* script,
                                             tessarin::IScriptTranscriber** out);
