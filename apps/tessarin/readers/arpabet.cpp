#include "apps/tessarin/readers/arpabet.h"

#include <cstdint>
#include <sstream>

#include "tessarin/tessarin_c.h"

namespace {

constexpr std::string_view kStressDigits = "012";

const char* ArpabetOf(const char* label) {
    return tessarin_get_phoneme_symbol(label, TESSARIN_ARPABET);
}

/// The first label for which `fits`, or null.
template <class Fits> const char* FindLabel(Fits fits) {
    for (uint32_t i = 0; tessarin_get_phoneme_label(i) != nullptr; ++i) {
        if (fits(tessarin_get_phoneme_label(i))) {
            return tessarin_get_phoneme_label(i);
        }
    }
    return nullptr;
}

} // namespace

std::string LabelsFromArpabet(std::string_view phones) {
    std::istringstream list{std::string(phones)};
    std::string labels;
    for (std::string phone; list >> phone;) {
        if (kStressDigits.find(phone.back()) != std::string_view::npos) {
            phone.pop_back();
        }
        const char* const found =
            FindLabel([&](const char* label) { return phone == ArpabetOf(label); });
        if (found == nullptr) {
            return "";
        }
        labels += found;
    }
    return labels;
}

std::string ArpabetFromLabels(std::string_view labels) {
    std::string phones;
    while (!labels.empty()) {
        const char* const found =
            FindLabel([&](const char* label) { return labels.starts_with(label); });
        if (found == nullptr) {
            return "";
        }
        phones.append(phones.empty() ? "" : " ").append(ArpabetOf(found));
        labels.remove_prefix(std::string_view(found).size());
    }
    return phones;
}
