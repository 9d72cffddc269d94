#include "platform/temp_file.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace tessarin {

std::string TempFolder() {
    return access(P_tmpdir, W_OK | X_OK) == 0 ? P_tmpdir : "";
}

std::string CreateUniqueFile(const std::string& folder, const std::string& prefix) {
    std::string path = folder + "/" + prefix + "XXXXXX";
    const int descriptor = mkstemp(path.data());
    if (descriptor < 0) {
        return "";
    }
    close(descriptor);
    return path;
}

} // namespace tessarin
