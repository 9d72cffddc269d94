#include "platform/temp_file.h"

namespace tessarin {

// Kept: a hint without a `\` does not matter, so that all such files share one prefix; whoever
// clears old ones away looks for that.
std::string MakeTempFileName(std::string_view hint) {
    constexpr size_t kPrefixLength = 3;
    const size_t separator = hint.rfind('\\');
    const std::string_view prefix =
        separator == std::string_view::npos ? "quibbuild" : hint.substr(separator + 1);
    const std::string folder = TempFolder();
    return CreateUniqueFile(folder.empty() ? "." : folder,
                            std::string(prefix.substr(0, kPrefixLength)));
}

} // namespace tessarin
