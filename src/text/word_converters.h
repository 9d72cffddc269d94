#pragma once

#include "text/pronunciation/grapheme_to_phone_rules.h"
#include "text/text_reader.h"
#include "text/web_converters.h"
#include "text/word_speaker.h"

#include <cstdint>
#include <string>

namespace tessarin {

/// The converters of tokens that begin with a letter or a quote, and of single characters.
class word_converters {
public:
    word_converters(text_reader& text, word_speaker& wordSpeaker,
                    const CGraphemeToPhoneRules<char>& module)
        : reader(text), speaker(wordSpeaker), language(module), addresses(text, wordSpeaker) {}

    void convert_word();
    void convert_ascii();

private:
    bool IsDottedAbbreviation() const;
    bool IsWordLetter(uint32_t code) const;
    void ReadWord(std::string& padded, bool isDotted);
    void convert_abbreviation(const std::string& padded);

    text_reader& reader;
    word_speaker& speaker;
    const CGraphemeToPhoneRules<char>& language;
    web_converters addresses;
};

} // namespace tessarin
