#pragma once

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "tessarin/tessarin.h"

/// The bytes of a file of the project's own data.
inline std::string DataFile(const std::string& name) {
    std::ifstream file(TESSARIN_SOURCE_DIR "/data/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The project's own model, as a host loads it.
struct shipped_model {
    shipped_model() {
        const std::string image = DataFile("en-us.model");
        EXPECT_EQ(CreateAccHMM(image.data(), static_cast<uint32_t>(image.size()), nullptr, &model),
                  0);
    }
    ~shipped_model() { DestroyAccHMM(model); }
    shipped_model(const shipped_model&) = delete;
    shipped_model& operator=(const shipped_model&) = delete;

    tessarin::CAccousticHMM* model = nullptr;
};
