#include "apps/tessarin/pictures/canvas.h"

#include <algorithm>
#include <cmath>
#include <string>

#include <utf8.h>

#include "apps/tessarin/pictures/letter_dots.h"
#include "apps/tessarin/readers/near_characters.h"

namespace {

constexpr int kAdvance = kLetterWidth + 1;

/// The text in the letters that there are dots for.
std::string Drawable(std::string_view text) {
    std::string letters;
    for (auto at = text.begin(); at != text.end();) {
        char32_t code = 0;
        try {
            code = utf8::next(at, text.end());
        } catch (const utf8::exception&) {
            code = 0;
            ++at;
        }
        const auto near = code < 0x80 ? std::nullopt : FindNearCharacters(code);
        if (near) {
            letters += *near;
        } else {
            letters += code >= 0x20 && code < 0x7F ? static_cast<char>(code) : kBoxLetter;
        }
    }
    return letters;
}

} // namespace

color Mixed(color from, color to, float share) {
    const auto mix = [share](uint8_t a, uint8_t b) {
        const auto first = static_cast<float>(a);
        return static_cast<uint8_t>(std::lround(first + (static_cast<float>(b) - first) * share));
    };
    return {mix(from.red, to.red), mix(from.green, to.green), mix(from.blue, to.blue)};
}

Canvas::Canvas(int pictureWidth, int pictureHeight, color background)
    : width(pictureWidth), height(pictureHeight),
      pixels(static_cast<size_t>(width) * static_cast<size_t>(height) * 3) {
    FillRect(0, 0, width, height, background);
}

void Canvas::SetPixel(int x, int y, color paint) {
    Tint(x, y, paint, 1.0f);
}

void Canvas::Tint(int x, int y, color paint, float share) {
    if (x < 0 || y < 0 || x >= width || y >= height) {
        return;
    }
    uint8_t* const pixel =
        &pixels[(static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)) * 3];
    const color mixed = Mixed({pixel[0], pixel[1], pixel[2]}, paint, share);
    pixel[0] = mixed.red;
    pixel[1] = mixed.green;
    pixel[2] = mixed.blue;
}

void Canvas::FillRect(int x, int y, int w, int h, color paint) {
    for (int row = std::max(y, 0); row < std::min(y + h, height); ++row) {
        for (int column = std::max(x, 0); column < std::min(x + w, width); ++column) {
            SetPixel(column, row, paint);
        }
    }
}

void Canvas::DrawText(int x, int y, std::string_view text, color paint, int scale) {
    for (const char letter : Drawable(text)) {
        const letter_dots& dots = DotsOf(letter);
        for (int column = 0; column < kLetterWidth; ++column) {
            for (int row = 0; row < kLetterHeight; ++row) {
                if ((dots[static_cast<size_t>(column)] >> row & 1) != 0) {
                    FillRect(x + column * scale, y + row * scale, scale, scale, paint);
                }
            }
        }
        x += kAdvance * scale;
    }
}

int Canvas::TextWidth(std::string_view text, int scale) {
    const auto count = static_cast<int>(Drawable(text).size());
    return count > 0 ? (count * kAdvance - 1) * scale : 0;
}

int Canvas::TextHeight(int scale) {
    return kLetterHeight * scale;
}
