#pragma once

namespace tessarin {

/// The texts of the tables in data/, which the build makes from the files.
struct built_in_scripts {
    const char* english;
};
extern const built_in_scripts kBuiltInScripts;

} // namespace tessarin
