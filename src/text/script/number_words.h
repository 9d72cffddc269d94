#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tessarin {

class ScriptTable;

/// Says digits in the words of a language. Each takes at least one digit and nothing else, and
/// returns words separated by blanks.
class NumberWords {
public:
    explicit NumberWords(const ScriptTable& words) : table(words) {}

    /// As a number: "one hundred five". More digits than there are names for are said singly.
    std::string Cardinal(std::string_view digits) const;
    /// The same, with its last word as an ordinal.
    std::string Ordinal(std::string_view digits) const;
    /// Each digit by itself.
    std::string Digits(std::string_view digits) const;
    /// As a year, a house or a flight is: "nineteen oh five", "two twenty one", "ten sixty six".
    std::string Pairs(std::string_view digits) const;
    /// As a year: pairs, but "two thousand one".
    std::string Year(std::string_view digits) const;

    /// All ways in which people say a number of up to ten digits. Of a number with `isGrouped`
    /// thousands only those that count.
    std::vector<std::string> Readings(std::string_view digits, bool isGrouped) const;

    /// The words with the last one as an ordinal or as a plural.
    std::string MakeOrdinal(std::string words) const;
    std::string MakePlural(std::string words) const;

private:
    std::string BelowThousand(std::string_view digits) const;
    std::string TwoDigits(std::string_view digits) const;

    const ScriptTable& table;
};

/// The value of up to nine digits; more count as the largest.
uint32_t ValueOf(std::string_view digits);

/// Adds words to others, with a blank between.
void AddWords(std::string_view words, std::string& to);

} // namespace tessarin
