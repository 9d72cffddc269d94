#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <utf8.h>

#include "tessarin/error_codes.h"
#include "text/script/script_reading.h"

namespace tessarin {

struct TranscriberInfo;

/// Runs `body`, which returns a code, and answers kInvalidUtf8 for bytes that are not UTF-8.
template <class Body> error_code RefusingBadUtf8(Body&& body) {
    try {
        return body();
    } catch (const utf8::exception&) {
        return kInvalidUtf8;
    }
}

/// A text in UTF-8 as a transcriber reads it, and the way back from places in that to places in the
/// caller's text.
class SpanText {
public:
    /// Converts to the code page of `info`. What that lacks is put near (FindNearCharacters) or
    /// becomes a blank. Throws utf8::exception for bytes that are not UTF-8.
    SpanText(std::string_view utf8, const TranscriberInfo& info);
    /// What is said of a script; places are those of the script.
    SpanText(std::string_view script, ScriptReading said, const TranscriberInfo& info);

    const std::string& GetLocal() const { return local; }

    struct place {
        int32_t offset; ///< in bytes of the caller's text
        int32_t length;
    };
    /// Where a stretch of the local text stands in the caller's text.
    place FindOriginal(int32_t offset, int32_t length) const;
    /// The caller's spelling of it.
    std::string GetOriginal(place stretch) const;
    /// What of the script a stretch of the local text stands for; empty without a script.
    ScriptReading::source FindSource(int32_t offset, int32_t length) const;
    /// What was read of the script; null without one.
    const ScriptReading* GetReading() const { return reading.get(); }

private:
    place FindInConverted(int32_t offset, int32_t length) const;

    std::unique_ptr<const ScriptReading> reading;
    std::string given;    ///< the script that was read
    std::string original; ///< what was converted
    std::string local;
    std::vector<uint32_t> starts; ///< of each character of the original, and its end
    std::vector<uint32_t> owners; ///< for each byte of the local text and its end, the character
};

} // namespace tessarin
