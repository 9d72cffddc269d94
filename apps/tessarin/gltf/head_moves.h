#pragma once

#include <string_view>

#include "apps/tessarin/gltf/head_parts.h"

/// Where a vertex of the head goes when a blend shape is at 1, by the names of face tracking; it
/// stays for other names.
head_vector MoveOf(const head_vertex& vertex, std::string_view shape);
