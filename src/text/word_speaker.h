#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tessarin {

class ISpeakDict;
class PronunciationBuilder;
template <class Char> class CGraphemeToPhoneRules;

/// Says words into a builder: by the lexicon, or else by the rules of the language. All that it
/// works with belongs to the transcriber; the lexicon may be null. The trace log names its steps
/// and those of the converters as the transcriber's.
///
/// A `padded` word is in upper case with a blank before and after it.
class word_speaker {
public:
    word_speaker(CGraphemeToPhoneRules<char>& ruleModule, ISpeakDict* lexicon,
                 PronunciationBuilder& pronunciation)
        : module(ruleModule), dict(lexicon), builder(pronunciation) {}

    void TranscribeWord(const std::string& padded);
    /// Adds all pronunciations that the lexicon has of the word as one choice. False without any.
    bool LookupWord(std::string_view word);
    /// Says a word of any length.
    void TranscribeInPieces(std::string_view word);
    void SpellWord(const std::string& padded);
    void SpeakAsciiChar(uint32_t code);
    /// Says one word of a table, if the language has it.
    void SpeakWordOf(const char* const* words, uint32_t index);

private:
    CGraphemeToPhoneRules<char>& module; ///< its rules have work buffers
    ISpeakDict* dict;
    PronunciationBuilder& builder;
};

/// A longer word is said in pieces of this length, which keeps the time for one word bounded.
inline constexpr size_t kMaxWordLength = 254;

/// The word between the two blanks.
inline std::string_view Unpadded(const std::string& padded) {
    return std::string_view(padded).substr(1, padded.size() - 2);
}

} // namespace tessarin
