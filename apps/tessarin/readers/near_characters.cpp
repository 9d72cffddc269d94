#include "apps/tessarin/readers/near_characters.h"

#include "tessarin/tessarin_c.h"

std::optional<std::string_view> FindNearCharacters(char32_t character) {
    const char* const near = tessarin_get_near_text(character);
    return near != nullptr ? std::optional<std::string_view>(near) : std::nullopt;
}
