#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tessarin/owned.h"
#include "tessarin/script_transcriber.h"

/// How a text is read as a script.
struct script_request {
    const tessarin_script_options* options;
    tessarin_language* language; ///< whose words are known
};

/// What is said, as a transcriber reads it, and the way back to the text that the user gave.
class SpokenText {
public:
    /// Takes the bytes that the user gave in `encoding`: utf-8, utf-16, local, or auto, which finds
    /// out. What the transcriber's code page lacks is put near (FindNearCharacters) or becomes a
    /// blank. `source` names the text in the Failure that is thrown when the bytes are
    /// not such a text.
    SpokenText(const std::string& source, std::string userBytes, const std::string& encoding,
               tessarin::IVisemixTranscriber& transcriber);
    /// The same of a script: what is said of it. Places are those of the script.
    SpokenText(const std::string& source, std::string userBytes, const std::string& encoding,
               tessarin::IVisemixTranscriber& transcriber, const script_request& script);

    /// The text in the transcriber's code page.
    const std::string& GetLocal() const { return local; }
    /// How many characters became blanks.
    size_t GetNumLost() const { return lost; }

    struct place {
        int32_t offset; ///< in bytes of the user's text
        int32_t length;
    };
    /// Where a stretch of the local text stands in the user's text.
    place FindOriginal(int32_t offset, int32_t length) const;
    /// A stretch of the local text in the user's spelling, as UTF-8.
    std::string GetUtf8(int32_t offset, int32_t length) const {
        return GetUtf8(FindOriginal(offset, length));
    }
    /// A stretch of the user's text, as UTF-8.
    std::string GetUtf8(place stretch) const;
    /// What of the script a stretch of the local text stands for: a tessarin_span_kind and its
    /// flags. Empty where the text was read literally.
    std::optional<tessarin_script_part> FindPart(int32_t offset, int32_t length) const;
    /// The transcriber that knows all readings of the script, or `plain` for a literal text.
    tessarin::IVisemixTranscriber& TranscriberOr(tessarin::IVisemixTranscriber& plain) const;
    /// What was said for the word at `offset` of the local text, whose phonemes are `phonemes`;
    /// empty for a word with one reading.
    std::string FindReading(int32_t offset, const std::string& phonemes) const;
    /// How many characters of the script have no name and are not said.
    size_t GetNumUnsaid() const;

    /// All of the text as UTF-8.
    const std::string& GetUtf8() const { return userUtf8; }
    /// Where a stretch of that stands in the user's text.
    place FindOfUtf8(int32_t offset, int32_t length) const;

private:
    struct character {
        char32_t code;
        uint32_t start; ///< in bytes of the user's text
    };
    enum class form { kLocal, kUtf8, kUtf16, kUtf16Swapped };

    form FindForm(const std::string& source, const std::string& encoding, size_t* markLength) const;
    void ReadCharacters(const std::string& source, form ofText, size_t from,
                        const tessarin::TranscriberInfo& info);
    void ReadUtf16(bool swapped, size_t from);
    void ReadUser(const std::string& source, const std::string& encoding,
                  const tessarin::TranscriberInfo& info);
    void ReadScript(const std::string& source, const script_request& request,
                    tessarin::IVisemixTranscriber& transcriber);
    void MakeLocal(const tessarin::TranscriberInfo& info);
    place FindOwners(int32_t offset, int32_t length) const;

    std::string bytes; ///< the user's
    std::string local;
    std::vector<character> characters; ///< of the user's text, and its end
    std::string userUtf8;              ///< the user's text
    std::vector<uint32_t> utf8Starts;  ///< of each character, in UTF-8, and its end
    std::vector<character> spoken;     ///< of what is said of a script, and its end
    std::vector<uint32_t> owners; ///< for each byte of the local text and its end, the character
    tessarin::flat::script_owner script;
    tessarin::IScriptTranscriber* readings = nullptr; ///< of the script
    tessarin::transcriber_owner readingsOwner;
    size_t lost = 0;
};
