#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

struct color {
    uint8_t red;
    uint8_t green;
    uint8_t blue;
};

/// Between two colours; a share of 0 is `from`.
color Mixed(color from, color to, float share);

/// A picture of 8-bit RGB. What lies outside it is not drawn.
class Canvas {
public:
    Canvas(int pictureWidth, int pictureHeight, color background);

    int GetWidth() const { return width; }
    int GetHeight() const { return height; }
    /// Rows from the top, three bytes a pixel.
    const std::vector<uint8_t>& GetPixels() const { return pixels; }

    void SetPixel(int x, int y, color paint);
    /// Covers what is there by `share` of `paint`.
    void Tint(int x, int y, color paint, float share);
    void FillRect(int x, int y, int w, int h, color paint);
    /// `scale` pixels for each dot of the letters. UTF-8; letters with accents lose them, and what
    /// has no letter is a box.
    void DrawText(int x, int y, std::string_view text, color paint, int scale);

    /// The room that a text takes.
    static int TextWidth(std::string_view text, int scale);
    static int TextHeight(int scale);

private:
    int width;
    int height;
    std::vector<uint8_t> pixels;
};
