#pragma once

#include <string>
#include <string_view>

namespace tessarin {

/// Makes a new, empty file in the system's folder for temporary files, or in the working folder
/// where there is none, and returns its path; empty when no file can be made. The name begins with
/// the first three characters of what stands after the last `\` of `hint`, or of "quibbuild" when
/// `hint` has no `\`.
std::string MakeTempFileName(std::string_view hint);

/// The system's folder for temporary files; empty where there is none.
std::string TempFolder();

/// Makes a file of a new name in `folder`, which begins with `prefix`, and returns its path; empty
/// when that fails.
std::string CreateUniqueFile(const std::string& folder, const std::string& prefix);

} // namespace tessarin
