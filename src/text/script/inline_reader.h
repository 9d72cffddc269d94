#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/script/number_words.h"
#include "text/script/script_reading.h"
#include "text/script/script_table.h"
#include "text/script/script_tokens.h"

namespace tessarin {

/// Whether a lexicon has a word.
using word_lookup = std::function<bool(std::string_view word)>;

/// Reads a stretch of what is said: numbers by their kind, abbreviations, marks within a line,
/// emphasis. Each Match function looks at what begins with the token `i` and returns what is said
/// for it, or nothing when it is of another kind.
class InlineReader {
public:
    /// `known` may be empty; all else must outlive the reader.
    InlineReader(const ScriptTokens& stretch, const ScriptTable& words, const word_lookup& known,
                 ScriptReading& reading)
        : tokens(stretch), table(words), numbers(words), isKnown(known), out(reading) {}

    void Read();

private:
    struct match {
        std::string spoken;
        size_t end; ///< the token after it
        uint32_t flags = 0;
        std::vector<std::string> others = {}; ///< what a reader may say instead
    };
    using maybe_match = std::optional<match>;

    /// A number with its separators of thousands and its decimals.
    struct written_number {
        std::string whole;
        std::string decimals;
        size_t end;
        bool isGrouped;

        bool IsOne() const { return whole == "1" && decimals.empty(); }
        bool IsPlain() const { return decimals.empty() && !isGrouped; }
    };

    // The steps through the tokens.
    size_t Step(size_t i);
    void StartLine(size_t i);
    void Say(const match& found, size_t i);
    size_t ReadPunctuation(size_t i);
    void PassOn(std::string_view text, size_t i, size_t end);
    script_place PlaceOf(size_t first, size_t end) const { return tokens.PlaceOf(first, end); }

    struct closing_sign {
        char32_t code;
        size_t reach;    ///< how many tokens on it may stand
        bool withinLine; ///< and not beyond a line break
        size_t place;    ///< the token up to which the last search has looked
    };

    // Marks within a line: they return the token after them, or 0.
    size_t ReadMark(size_t i);
    size_t ReadParenthesis(size_t i);
    size_t ReadBracket(size_t i, closing_sign& closing);
    size_t ReadStars(size_t i);
    size_t ReadTag(size_t i);
    size_t FindClosing(size_t i, closing_sign& sign) const;
    bool LooksLikeDirection(size_t first, size_t end) const;
    bool IsSentenceStart(size_t i) const;
    bool IsSentenceEnd(size_t i) const;
    size_t AddEvent(script_event_kind kind, size_t first, size_t end);

    // Numbers.
    maybe_match MatchNumber(size_t i) const;
    maybe_match MatchFixed(size_t i) const;
    maybe_match MatchDigitGroups(size_t i) const;
    bool IsTelephoneGroup(size_t i) const;
    maybe_match MatchSlashDate(size_t i) const;
    maybe_match MatchTime(size_t i) const;
    maybe_match MatchVersion(size_t i) const;
    maybe_match MatchDayOfMonth(size_t i) const;
    maybe_match MatchQuantity(size_t i) const;
    maybe_match MatchWithLetters(const written_number& number) const;
    maybe_match MatchFraction(const written_number& number) const;
    maybe_match MatchFractionSign(size_t i) const;
    written_number ReadNumber(size_t i) const;
    std::string SayNumber(const written_number& number) const;
    std::string SayPlain(size_t i) const;
    std::vector<std::string> OtherTimes(std::string_view hour, std::string_view minute) const;
    std::string SayFraction(std::string_view over, std::string_view under) const;
    std::string SayDecimals(std::string_view digits) const;
    bool IsMonthBefore(size_t i) const;
    bool IsWordBefore(script_section section, size_t i, size_t reach) const;
    bool IsWordNear(script_section section, size_t i, size_t numWords) const;

    // What a number counts.
    maybe_match MatchMoney(size_t i) const;
    maybe_match MatchCounted(size_t i, const written_number& number) const;
    maybe_match MatchUnit(size_t i, size_t at, bool isOne) const;
    maybe_match MatchFeetAndInches(const written_number& number) const;
    const ScriptTable::fields* FindUnit(size_t from, size_t& end, bool isGlued) const;
    std::string_view FindScale(size_t& end) const;
    std::string SayHundredths(const written_number& number, const ScriptTable::fields& names) const;
    std::vector<std::string> OtherHundredths(const written_number& number,
                                             const ScriptTable::fields& names) const;
    size_t SkipUnitStop(size_t i) const;
    size_t AddPer(size_t end, std::string& spoken) const;
    bool IsAdjective(size_t i, size_t end) const;

    // Words.
    maybe_match MatchWord(size_t i) const;
    maybe_match MatchAddress(size_t i) const;
    maybe_match MatchDottedLetters(size_t i) const;
    maybe_match MatchAbbreviation(size_t i) const;
    maybe_match MatchNeighbour(size_t i) const;
    maybe_match MatchCalendar(size_t i) const;
    maybe_match MatchRoman(size_t i) const;
    maybe_match MatchLettersAndDigits(size_t i) const;
    maybe_match MatchStutter(size_t i) const;
    maybe_match MatchCapitals(size_t i) const;
    maybe_match MatchWithoutVowel(size_t i) const;
    maybe_match MatchDrawl(size_t i) const;
    bool IsKnown(std::string_view word) const { return isKnown && isKnown(word); }
    size_t StopEnd(size_t i) const;

    // Signs.
    maybe_match MatchSign(size_t i) const;
    maybe_match MatchSignBeforeNumber(size_t i) const;
    maybe_match MatchJoint(size_t i) const;

    const ScriptTokens& tokens;
    const ScriptTable& table;
    NumberWords numbers;
    const word_lookup& isKnown;
    ScriptReading& out;
    bool hasLowerCase = false; ///< the line
    bool isQuoteOpen = false;
    bool isSingleQuoteOpen = false;
    bool dashesAreTurns = false; ///< at the beginning of a line, of speakers
    closing_sign parenthesis{U')', 120, false, 0};
    closing_sign bracket{U']', 400, false, 0};
    closing_sign brace{U'}', 400, false, 0};
    closing_sign star{U'*', 80, true, 0};
    closing_sign tagEnd{U'>', 80, true, 0};
    size_t emphasisEnd = 0;           ///< the token of the closing star
    size_t lastPausePlace = SIZE_MAX; ///< the token after the last pause
};

} // namespace tessarin
