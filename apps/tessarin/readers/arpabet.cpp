#include "apps/tessarin/readers/arpabet.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace {

struct phone_name {
    std::string_view arpabet;
    std::string_view label;
};

constexpr std::array<phone_name, 40> kPhones = {{
    {"SIL", "x"}, {"AA", "AA"}, {"AE", "AE"}, {"AH", "AH"}, {"AO", "AO"}, {"AW", "AW"},
    {"AY", "AY"}, {"B", "b"},   {"CH", "CH"}, {"D", "d"},   {"DH", "DH"}, {"EH", "EH"},
    {"ER", "ER"}, {"EY", "EY"}, {"F", "f"},   {"G", "g"},   {"HH", "h"},  {"IH", "IH"},
    {"IY", "IY"}, {"JH", "j"},  {"K", "k"},   {"L", "l"},   {"M", "m"},   {"N", "n"},
    {"NG", "NG"}, {"OW", "OW"}, {"OY", "OY"}, {"P", "p"},   {"R", "r"},   {"S", "s"},
    {"SH", "SH"}, {"T", "t"},   {"TH", "TH"}, {"UH", "UH"}, {"UW", "UW"}, {"V", "v"},
    {"W", "w"},   {"Y", "y"},   {"Z", "z"},   {"ZH", "ZH"},
}};

constexpr std::string_view kStressDigits = "012";

} // namespace

std::string LabelsFromArpabet(std::string_view phones) {
    std::istringstream list{std::string(phones)};
    std::string labels;
    for (std::string phone; list >> phone;) {
        if (kStressDigits.find(phone.back()) != std::string_view::npos) {
            phone.pop_back();
        }
        const auto* found = std::ranges::find(kPhones, phone, &phone_name::arpabet);
        if (found == kPhones.end()) {
            return "";
        }
        labels += found->label;
    }
    return labels;
}

std::string ArpabetFromLabels(std::string_view labels) {
    std::string phones;
    while (!labels.empty()) {
        const auto* found = std::ranges::find_if(
            kPhones, [&](const phone_name& phone) { return labels.starts_with(phone.label); });
        if (found == kPhones.end()) {
            return "";
        }
        phones.append(phones.empty() ? "" : " ").append(found->arpabet);
        labels.remove_prefix(found->label.size());
    }
    return phones;
}
