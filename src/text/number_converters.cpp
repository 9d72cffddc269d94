#include "text/number_converters.h"

#include "base/flog.h"
#include "text/character_classes.h"

#include <string_view>

namespace tessarin {
namespace {

constexpr int32_t kBillion = 1000000000;
constexpr int32_t kMillion = 1000000;

uint32_t ValueOf(uint32_t digit) {
    return digit - '0';
}

/// What an ordinal number with this last digit ends in.
// Kept: the tens do not matter, so that 11th, 12th and 13th are not ordinals but a number and two
// letters, while 11st is one.
std::string_view OrdinalSuffix(uint32_t lastDigit) {
    switch (lastDigit) {
    case 1:
        return "ST";
    case 2:
        return "ND";
    case 3:
        return "RD";
    default:
        return "TH";
    }
}

/// Whether thousands are said: from 1100 to 1999 the hundreds are counted through.
bool HasThousands(int32_t n) {
    return (n >= 1000 && n < 1100) || n >= 2000;
}

} // namespace

void number_converters::convert_number() {
    flog scope("CTranscriber::convert_number");
    uint32_t lastDigit = 0;
    const auto number = static_cast<int32_t>(ReadNumber(lastDigit));
    if (HasOrdinalSuffix(lastDigit)) {
        SpeakOrdinal(number);
        reader.Advance();
        reader.Advance();
        return;
    }
    SpeakCardinal(number);
    if (IsDecimalPoint()) {
        SpeakSymbolWord(kPointWord);
        reader.Advance();
        SpeakDecimals();
    }
    if (reader.Cur() == '%') {
        speaker.SpeakAsciiChar('%');
        reader.Advance();
    }
    for (; IsLetter(reader.Cur()); reader.Advance()) {
        speaker.SpeakAsciiChar(reader.Cur());
    }
}

void number_converters::convert_money() {
    flog scope("CTranscriber::convert_money");
    reader.Advance();
    uint32_t lastDigit = 0;
    const uint32_t number = ReadNumber(lastDigit);
    SpeakCardinal(static_cast<int32_t>(number));
    const symbol_word dollars = number == 1 ? kDollarWord : kDollarsWord;
    if (!IsDecimalPoint()) {
        SpeakSymbolWord(dollars);
        return;
    }
    reader.Advance();
    if (IsDigit(reader.Next()) && !IsDigit(reader.Next2())) {
        SpeakSymbolWord(dollars);
        SpeakCents();
    } else {
        SpeakSymbolWord(kPointWord);
        SpeakDecimals();
        SpeakSymbolWord(kDollarsWord);
    }
}

/// Reads digits and the separators between them. A number of more than 32 bits wraps around.
uint32_t number_converters::ReadNumber(uint32_t& lastDigit) {
    const uint32_t separator = CodeOf(language.thousands_separator);
    uint32_t number = 0;
    while (true) {
        if (IsDigit(reader.Cur())) {
            lastDigit = ValueOf(reader.Cur());
            number = number * 10 + lastDigit;
        } else if (reader.Cur() != separator || !IsDigit(reader.Next())) {
            return number;
        }
        reader.Advance();
    }
}

bool number_converters::IsDecimalPoint() const {
    return reader.Cur() == CodeOf(language.decimal_point) && IsDigit(reader.Next());
}

bool number_converters::HasOrdinalSuffix(uint32_t lastDigit) const {
    const std::string_view suffix = OrdinalSuffix(lastDigit);
    return ToUpper(reader.Cur()) == suffix[0] && ToUpper(reader.Next()) == suffix[1] &&
           !IsLetterOrDigit(reader.Next2());
}

void number_converters::SpeakDecimals() {
    for (; IsDigit(reader.Cur()); reader.Advance()) {
        speaker.SpeakAsciiChar(reader.Cur());
    }
}

/// Says the two digits at the current place, unless there are no cents.
void number_converters::SpeakCents() {
    const auto cents = static_cast<int32_t>(10 * ValueOf(reader.Cur()) + ValueOf(reader.Next()));
    if (cents != 0) {
        SpeakSymbolWord(kAndWord);
        SpeakCardinal(cents);
        SpeakSymbolWord(cents == 1 ? kCentWord : kCentsWord);
    }
    reader.Advance();
    reader.Advance();
}

// Kept: "and" stands after a thousand, a million or a billion, and never after a hundred.
void number_converters::SpeakCardinal(int32_t n) {
    flog scope("CTranscriber::SpeakCardinal");
    if (n < 0) {
        SpeakSymbolWord(kMinusWord);
        n = static_cast<int32_t>(0 - static_cast<uint32_t>(n));
        if (n < 0) {
            SpeakSymbolWord(kInfinityWord);
            return;
        }
    }
    // Says a multiple of `unit`; returns whether that was all of the number.
    const auto speakScale = [&](int32_t unit, scale_word word) {
        SpeakCardinal(n / unit);
        SpeakScaleWord(word);
        n %= unit;
        if (n != 0 && n < 100) {
            SpeakSymbolWord(kAndWord);
        }
        return n == 0;
    };
    if ((n >= kBillion && speakScale(kBillion, kBillionWord)) ||
        (n >= kMillion && speakScale(kMillion, kMillionWord)) ||
        (HasThousands(n) && speakScale(1000, kThousandWord))) {
        return;
    }
    if (n >= 100) {
        speaker.SpeakWordOf(language.cardinals, static_cast<uint32_t>(n / 100));
        SpeakScaleWord(kHundredWord);
        n %= 100;
        if (n == 0) {
            return;
        }
    }
    SpeakTens(static_cast<uint32_t>(n), language.cardinals, language.tens);
}

// Kept: in front of a rest, hundreds, millions and billions take the ordinal word, so that 125th is
// "one hundredth twenty fifth"; language files hold their words by this use.
void number_converters::SpeakOrdinal(int32_t n) {
    flog scope("CTranscriber::SpeakOrdinal");
    if (n < 0) {
        SpeakSymbolWord(kMinusForOrdinalsWord);
        n = static_cast<int32_t>(0 - static_cast<uint32_t>(n));
        if (n < 0) {
            SpeakSymbolWord(kInfinityWord);
            return;
        }
    }
    const auto speakScale = [&](int32_t unit, scale_word exactWord, scale_word word) {
        SpeakCardinal(n / unit);
        n %= unit;
        SpeakScaleWord(n == 0 ? exactWord : word);
        if (n != 0 && n < 100) {
            SpeakSymbolWord(kAndWord);
        }
        return n == 0;
    };
    if ((n >= kBillion && speakScale(kBillion, kExactBillionthWord, kBillionthWord)) ||
        (n >= kMillion && speakScale(kMillion, kExactMillionthWord, kMillionthWord)) ||
        (HasThousands(n) && speakScale(1000, kThousandthWord, kThousandWord))) {
        return;
    }
    if (n >= 100) {
        speaker.SpeakWordOf(language.cardinals, static_cast<uint32_t>(n / 100));
        SpeakScaleWord(kHundredthWord);
        n %= 100;
        if (n == 0) {
            return;
        }
    }
    SpeakTens(static_cast<uint32_t>(n), language.ordinals, language.ordinal_tens);
}

/// Says a number below 100. The words that end it are cardinals or ordinals.
void number_converters::SpeakTens(uint32_t n, const char* const* lastUnits,
                                  const char* const* lastTens) {
    if (n < 20) {
        speaker.SpeakWordOf(lastUnits, n);
        return;
    }
    const uint32_t ten = (n - 20) / 10;
    const uint32_t unit = n % 10;
    if (unit == 0) {
        speaker.SpeakWordOf(lastTens, ten);
    } else if (unitsBeforeTens) {
        speaker.SpeakWordOf(lastUnits, unit);
        SpeakSymbolWord(kAndWord);
        speaker.SpeakWordOf(language.tens, ten);
    } else {
        speaker.SpeakWordOf(language.tens, ten);
        speaker.SpeakWordOf(lastUnits, unit);
    }
}

void number_converters::SpeakSymbolWord(symbol_word word) {
    speaker.SpeakWordOf(language.symbol_words, word);
}

void number_converters::SpeakScaleWord(scale_word word) {
    speaker.SpeakWordOf(language.scale_words, word);
}

} // namespace tessarin
