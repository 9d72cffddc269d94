#pragma once

#include <string>

/// `text` for the inside of an element of XML, HTML or captions: the characters that begin tags and
/// entities are written as entities. Quotes stay, as readers of captions do not know theirs.
std::string EscapeMarkup(const std::string& text);

/// The same for the value of an attribute of XML between double quotes.
std::string EscapeAttribute(const std::string& text);
