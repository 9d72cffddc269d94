#pragma once

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/log_file.h"
#include "support/temp_file.h"

namespace tessarin::test {

/// The lines that `body` writes to a trace log, without the two banners and their blank lines.
inline std::vector<std::string> LoggedLines(const std::function<void()>& body) {
    const TempFile file(".log");
    EXPECT_GT(OpenLog(file.Path()), 0);
    body();
    CloseLog();
    std::istringstream content(file.Content());
    std::vector<std::string> lines;
    for (std::string line; std::getline(content, line);) {
        lines.push_back(line);
    }
    if (lines.size() < 4) {
        ADD_FAILURE() << "a banner is missing";
        return {};
    }
    return {lines.begin() + 2, lines.end() - 2};
}

} // namespace tessarin::test
