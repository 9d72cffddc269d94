#pragma once

#include <string_view>

namespace tessarin {

/// The texts of the maps in data/shapes, which are built into the library.
struct built_in_shapes {
    const char* visemes;
    const char* arkit;
    const char* vrm;
    const char* switches;
    const char* preston_blair;
};
extern const built_in_shapes kBuiltInShapes;

/// The text of the map whose set has this name, or null.
const char* FindBuiltInShapes(std::string_view set);

} // namespace tessarin
