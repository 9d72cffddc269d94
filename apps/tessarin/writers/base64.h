#pragma once

#include <string>
#include <string_view>

/// Bytes as text, padded with `=`.
std::string Base64(std::string_view bytes);
