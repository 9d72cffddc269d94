#pragma once

#include <string>
#include <string_view>

namespace tessarin {

/// The system's text of a UTF-8 text; what is not UTF-8 is read in the code page of the process, as
/// hosts of before gave paths.
std::wstring WideText(std::string_view text);

/// The UTF-8 text of the system's text.
std::string Utf8Text(std::wstring_view text);

/// As WideText, for a path, which may be longer than 260 characters.
std::wstring WidePath(std::string_view path);

} // namespace tessarin
