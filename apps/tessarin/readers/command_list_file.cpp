#include "apps/tessarin/readers/command_list_file.h"

#include <sstream>
#include <string_view>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"

namespace {

constexpr const char* kBlanks = " \t\r";
constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";

std::string Trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(kBlanks);
    const size_t last = text.find_last_not_of(kBlanks);
    return first == std::string_view::npos ? "" : std::string(text.substr(first, last + 1 - first));
}

listed_command ParseLine(const std::string& line, const std::string& place) {
    const size_t equals = line.find('=');
    if (equals == std::string::npos) {
        return {line, "", place};
    }
    listed_command command{Trimmed(line.substr(0, equals)), Trimmed(line.substr(equals + 1)),
                           place};
    if (command.name.empty() || command.phonemes.empty()) {
        throw Failure(kExitFailed, place + ": a name and phonemes are expected around =");
    }
    return command;
}

} // namespace

std::vector<listed_command> ReadCommandList(const std::string& path) {
    std::string content = ReadWholeFile(path);
    if (content.starts_with(kByteOrderMark)) {
        content.erase(0, 3);
    }
    std::vector<listed_command> commands;
    std::istringstream lines(content);
    int number = 1;
    for (std::string line; std::getline(lines, line); ++number) {
        line = Trimmed(line);
        if (!line.empty() && line.front() != '#') {
            commands.push_back(ParseLine(line, path + ":" + std::to_string(number)));
        }
    }
    if (commands.empty()) {
        throw Failure(kExitFailed, path + ": has no commands; write one on each line");
    }
    return commands;
}
