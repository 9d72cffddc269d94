#include "model/phoneme_alphabets.h"

#include <algorithm>
#include <array>

#include "tessarin/tessarin_c.h"

namespace tessarin {

namespace {

/// A phoneme in each alphabet of tessarin_alphabet.
using phoneme_row = std::array<const char*, 4>;

/// The columns are labels, IPA, ARPAbet and SAMPA. IPA is that of General American in the Handbook
/// of the IPA, with the pause of the extended IPA; SAMPA is that for English. The labels do not
/// tell a schwa from the vowel of "cut", nor a stressed from an unstressed "er".
constexpr phoneme_row kRows[] = {
    {"x", "(.)", "SIL", "_"}, {"AA", "ɑ", "AA", "A"},   {"AE", "æ", "AE", "{"},
    {"AH", "ʌ", "AH", "V"},   {"AO", "ɔ", "AO", "O"},   {"AW", "aʊ", "AW", "aU"},
    {"AY", "aɪ", "AY", "aI"}, {"b", "b", "B", "b"},     {"CH", "tʃ", "CH", "tS"},
    {"d", "d", "D", "d"},     {"DH", "ð", "DH", "D"},   {"EH", "ɛ", "EH", "E"},
    {"ER", "ɝ", "ER", "3`"},  {"EY", "eɪ", "EY", "eI"}, {"f", "f", "F", "f"},
    {"g", "ɡ", "G", "g"},     {"h", "h", "HH", "h"},    {"IH", "ɪ", "IH", "I"},
    {"IY", "i", "IY", "i"},   {"j", "dʒ", "JH", "dZ"},  {"k", "k", "K", "k"},
    {"l", "l", "L", "l"},     {"m", "m", "M", "m"},     {"n", "n", "N", "n"},
    {"NG", "ŋ", "NG", "N"},   {"OW", "oʊ", "OW", "oU"}, {"OY", "ɔɪ", "OY", "OI"},
    {"p", "p", "P", "p"},     {"r", "ɹ", "R", "r"},     {"s", "s", "S", "s"},
    {"SH", "ʃ", "SH", "S"},   {"t", "t", "T", "t"},     {"TH", "θ", "TH", "T"},
    {"UH", "ʊ", "UH", "U"},   {"UW", "u", "UW", "u"},   {"v", "v", "V", "v"},
    {"w", "w", "W", "w"},     {"y", "j", "Y", "j"},     {"z", "z", "Z", "z"},
    {"ZH", "ʒ", "ZH", "Z"},
};

} // namespace

const char* SymbolInAlphabet(std::string_view label, uint32_t alphabet) {
    const auto* found = std::ranges::find_if(
        kRows, [&](const phoneme_row& row) { return label == row[TESSARIN_LABELS]; });
    return found != std::end(kRows) && alphabet < found->size() ? (*found)[alphabet] : nullptr;
}

} // namespace tessarin
