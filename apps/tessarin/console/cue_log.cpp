#include "apps/tessarin/console/cue_log.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "apps/tessarin/console/failure.h"

namespace {

using json = nlohmann::ordered_json;

const char* NameOf(log_level level) {
    static constexpr const char* kNames[] = {"Trace", "Debug", "Info", "Warning", "Error", "Fatal"};
    return kNames[static_cast<int>(level)];
}

} // namespace

CueLog::CueLog(const cue_log_options& wanted, std::FILE* to) : options(wanted), stream(to) {
    if (options.file.empty()) {
        return;
    }
    file.open(options.file);
    if (!file) {
        throw Failure(kExitFailed, options.file + ": cannot be written");
    }
}

void CueLog::Start(const std::string& input) {
    const std::string message = "Application startup. Input file: \"" + input + "\".";
    WriteFile(log_level::info, message);
    if (options.isMachineReadable) {
        WriteEvent(json{{"type", "start"}, {"file", input}}.dump(-1, ' ', false,
                                                                 json::error_handler_t::replace),
                   log_level::info, message);
    } else if (!options.isQuiet) {
        std::fprintf(stream, "Generating lip sync data for %s.\n", input.c_str());
    }
}

void CueLog::Progress(double share) {
    const int reached = static_cast<int>(std::clamp(share, 0.0, 1.0) * 100);
    if (reached <= percent) {
        return;
    }
    percent = reached;
    const std::string message = "Progress: " + std::to_string(percent) + "%";
    WriteFile(log_level::trace, message);
    if (options.isMachineReadable) {
        WriteEvent(json{{"type", "progress"}, {"value", percent / 100.0}}.dump(), log_level::trace,
                   message);
    }
}

void CueLog::Succeed() {
    WriteFile(log_level::info, "Application terminating normally.");
    if (options.isMachineReadable) {
        WriteEvent(json{{"type", "success"}}.dump(), log_level::info,
                   "Application terminating normally.");
    } else if (!options.isQuiet) {
        std::fputs("Done.\n", stream);
    }
}

void CueLog::Fail(const std::string& reason) {
    const std::string message = "Application terminating with error: " + reason;
    WriteFile(log_level::fatal, message);
    if (options.isMachineReadable) {
        WriteEvent(json{{"type", "failure"}, {"reason", reason}}.dump(
                       -1, ' ', false, json::error_handler_t::replace),
                   log_level::fatal, message);
    }
}

void CueLog::Say(log_level level, const std::string& message) {
    WriteFile(level, message);
    if (level < options.consoleLevel) {
        return;
    }
    if (options.isMachineReadable) {
        WriteEvent(json{{"type", "log"}}.dump(), level, message);
    } else {
        std::fprintf(stream, "[%s] %s\n", NameOf(level), message.c_str());
    }
}

void CueLog::WriteEvent(const std::string& event, log_level level, const std::string& message) {
    json line = json::parse(event);
    line["log"] = {{"level", NameOf(level)}, {"message", message}};
    std::fprintf(stream, "%s\n", line.dump(-1, ' ', false, json::error_handler_t::replace).c_str());
    std::fflush(stream);
}

void CueLog::WriteFile(log_level level, const std::string& message) {
    if (file.is_open() && level >= options.fileLevel) {
        file << "[" << NameOf(level) << "] " << message << std::endl;
    }
}
