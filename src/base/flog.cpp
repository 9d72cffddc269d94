#include "base/flog.h"

#include <cstdarg>
#include <cstdio>
#include <exception>
#include <optional>

#include "base/crit_section.h"
#include "base/log_file.h"

namespace tessarin {

namespace {

/// Holds the log for one line, which goes to the disk at the end. Without a log it costs one test
/// and takes no lock; one that is closed meanwhile is null.
class log_line {
public:
    log_line() {
        if (OpenedLog() != nullptr) {
            scope.emplace(LogLock());
            log = OpenedLog();
        }
    }
    log_line(const log_line&) = delete;
    log_line& operator=(const log_line&) = delete;
    ~log_line() {
        if (log != nullptr) {
            std::fflush(log);
        }
    }

    FILE* Log() const { return log; }

private:
    std::optional<crit_section_scope> scope;
    FILE* log = nullptr;
};

} // namespace

flog::flog(const char* function) noexcept {
    const log_line line;
    if (FILE* log = line.Log()) {
        std::fprintf(log, "Enter: %s\n", function);
        Remember(function);
    }
}

flog::flog(const char* function, const char* format, ...) noexcept {
    const log_line line;
    FILE* log = line.Log();
    if (log == nullptr) {
        return;
    }
    std::fprintf(log, "Enter: %s", function);
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(log, format, arguments);
    va_end(arguments);
    std::fputc('\n', log);
    Remember(function);
}

flog::~flog() {
    // Kept: a scope that began before the log was opened leaves with an empty name; a reader of the
    // log sees by it where logging set in.
    const log_line line;
    if (FILE* log = line.Log()) {
        std::fprintf(log, "Leave: %s\n", name.c_str());
    }
}

void flog::Message(const char* format, ...) noexcept {
    const log_line line;
    FILE* log = line.Log();
    if (log == nullptr) {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(log, format, arguments);
    va_end(arguments);
    std::fputc('\n', log);
}

/// A trace must not fail the call that it traces: without memory the name stays empty.
void flog::Remember(const char* function) noexcept {
    try {
        name = function;
    } catch (const std::exception&) {
        name.clear();
    }
}

} // namespace tessarin
