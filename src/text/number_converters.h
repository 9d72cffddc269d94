#pragma once

#include "text/pronunciation/grapheme_to_phone_rules.h"
#include "text/text_reader.h"
#include "text/word_speaker.h"

#include <cstdint>

namespace tessarin {

/// The converters of numbers and of sums of money. Some languages say units before tens.
class number_converters {
public:
    number_converters(text_reader& text, word_speaker& wordSpeaker,
                      const CGraphemeToPhoneRules<char>& module, bool saysUnitsFirst)
        : reader(text), speaker(wordSpeaker), language(module), unitsBeforeTens(saysUnitsFirst) {}

    void convert_number();
    void convert_money();

private:
    uint32_t ReadNumber(uint32_t& lastDigit);
    bool IsDecimalPoint() const;
    bool HasOrdinalSuffix(uint32_t lastDigit) const;
    void SpeakDecimals();
    void SpeakCents();
    void SpeakCardinal(int32_t n);
    void SpeakOrdinal(int32_t n);
    void SpeakTens(uint32_t n, const char* const* lastUnits, const char* const* lastTens);
    void SpeakSymbolWord(symbol_word word);
    void SpeakScaleWord(scale_word word);

    text_reader& reader;
    word_speaker& speaker;
    const CGraphemeToPhoneRules<char>& language;
    bool unitsBeforeTens;
};

} // namespace tessarin
