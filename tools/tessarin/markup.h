#pragma once

#include <string>

/// `text` for XML, HTML and captions: the characters that begin tags and entities are written as
/// entities.
std::string EscapeMarkup(const std::string& text);
