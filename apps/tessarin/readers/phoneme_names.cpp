#include "apps/tessarin/readers/phoneme_names.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

#include "apps/tessarin/readers/arpabet.h"

namespace {

constexpr std::array<std::string_view, 13> kSilences = {
    "", "x", "_", "#", "sil", "sp", "spn", "pau", "h#", "<eps>", "<sil>", "<p:>", "silence"};

/// Vowels and consonants as the common English voices of synthesizers write them; a phoneme may
/// stand here in several ways.
constexpr std::array<std::pair<std::string_view, std::string_view>, 64> kSampa = {{
    {"A", "AA"},  {"A:", "AA"}, {"Q", "AA"},  {"{", "AE"},  {"V", "AH"},  {"@", "AH"},
    {"@2", "AH"}, {"6", "AH"},  {"O", "AO"},  {"O:", "AO"}, {"aU", "AW"}, {"AU", "AW"},
    {"aI", "AY"}, {"AI", "AY"}, {"E", "EH"},  {"e", "EH"},  {"e@", "EH"}, {"3`", "ER"},
    {"3:", "ER"}, {"3", "ER"},  {"r=", "ER"}, {"@`", "ER"}, {"eI", "EY"}, {"EI", "EY"},
    {"I", "IH"},  {"I2", "IH"}, {"I@", "IH"}, {"i", "IY"},  {"i:", "IY"}, {"oU", "OW"},
    {"@U", "OW"}, {"OI", "OY"}, {"U", "UH"},  {"U@", "UH"}, {"u", "UW"},  {"u:", "UW"},
    {"b", "b"},   {"tS", "CH"}, {"d", "d"},   {"D", "DH"},  {"f", "f"},   {"g", "g"},
    {"h", "h"},   {"dZ", "j"},  {"k", "k"},   {"l", "l"},   {"5", "l"},   {"l=", "l"},
    {"m", "m"},   {"n", "n"},   {"n=", "n"},  {"N", "NG"},  {"p", "p"},   {"r", "r"},
    {"s", "s"},   {"S", "SH"},  {"t", "t"},   {"4", "t"},   {"T", "TH"},  {"v", "v"},
    {"w", "w"},   {"j", "y"},   {"z", "z"},   {"Z", "ZH"},
}};

bool IsSilence(std::string_view name) {
    std::string lower(name);
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return std::tolower(c); });
    return std::ranges::find(kSilences, lower) != kSilences.end();
}

} // namespace

std::string LabelFromName(std::string_view name) {
    if (IsSilence(name)) {
        return "x";
    }
    const std::string own = ArpabetFromLabels(name);
    if (!own.empty() && own.find(' ') == std::string::npos) {
        return std::string(name);
    }
    std::string upper(name);
    std::ranges::transform(upper, upper.begin(), [](unsigned char c) { return std::toupper(c); });
    if (upper.starts_with("AX")) {
        upper = upper == "AXR" ? "ER" : "AH";
    }
    return upper.find_first_of(" \t") == std::string::npos ? LabelsFromArpabet(upper) : "";
}

std::string LabelFromSampa(std::string_view name) {
    if (IsSilence(name)) {
        return "x";
    }
    const auto* found =
        std::ranges::find(kSampa, name, [](const auto& pair) { return pair.first; });
    return found == kSampa.end() ? "" : std::string(found->second);
}
