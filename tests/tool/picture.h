#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <png.h>

/// A PNG as pixels of three bytes.
struct picture {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> pixels;

    int Brightness(int x, int y) const {
        const size_t at =
            (static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)) * 3;
        return pixels[at] + pixels[at + 1] + pixels[at + 2];
    }
};

inline picture ReadPng(const std::string& content) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_memory(&image, content.data(), content.size()), 0);
    image.format = PNG_FORMAT_RGB;
    picture result{static_cast<int>(image.width), static_cast<int>(image.height), {}};
    result.pixels.resize(PNG_IMAGE_SIZE(image));
    EXPECT_NE(png_image_finish_read(&image, nullptr, result.pixels.data(), 0, nullptr), 0);
    return result;
}
