#include "apps/tessarin/writers/base64.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

std::string Base64(std::string_view bytes) {
    static constexpr char kDigits[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const size_t count = std::min<size_t>(3, bytes.size() - i);
        uint32_t bits = 0;
        for (size_t k = 0; k < 3; ++k) {
            bits = bits << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        }
        for (size_t k = 0; k < 4; ++k) {
            text += k <= count ? kDigits[bits >> (18 - 6 * k) & 63] : '=';
        }
    }
    return text;
}
