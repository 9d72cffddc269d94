#include "mouth/built_in_shapes.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tessarin {

const char* FindBuiltInShapes(std::string_view set) {
    const std::array<std::pair<std::string_view, const char*>, 5> sets = {{
        {"visemes", kBuiltInShapes.visemes},
        {"arkit", kBuiltInShapes.arkit},
        {"vrm", kBuiltInShapes.vrm},
        {"switches", kBuiltInShapes.switches},
        {"preston-blair", kBuiltInShapes.preston_blair},
    }};
    const auto* found = std::ranges::find(sets, set, &decltype(sets)::value_type::first);
    return found != sets.end() ? found->second : nullptr;
}

} // namespace tessarin
