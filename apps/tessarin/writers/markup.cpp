#include "apps/tessarin/writers/markup.h"

std::string EscapeMarkup(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

std::string EscapeAttribute(const std::string& text) {
    std::string escaped;
    for (const char c : EscapeMarkup(text)) {
        escaped += c == '"' ? "&quot;" : std::string(1, c);
    }
    return escaped;
}
