#include "base/flog.h"

#include <cstdarg>
#include <cstdio>
#include <exception>

#include "base/crit_section.h"
#include "base/log_file.h"

namespace tessarin {

flog::flog(const char* function) noexcept {
    FILE* log = OpenedLog();
    if (log == nullptr) {
        return;
    }
    const crit_section_scope scope(LogLock());
    std::fprintf(log, "Enter: %s\n", function);
    Remember(function);
    std::fflush(log);
}

flog::flog(const char* function, const char* format, ...) noexcept {
    FILE* log = OpenedLog();
    if (log == nullptr) {
        return;
    }
    const crit_section_scope scope(LogLock());
    std::fprintf(log, "Enter: %s", function);
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(log, format, arguments);
    va_end(arguments);
    std::fputc('\n', log);
    Remember(function);
    std::fflush(log);
}

flog::~flog() {
    // Kept: a scope that began before the log was opened leaves with an empty name; a reader of the
    // log tells by it where logging set in.
    FILE* log = OpenedLog();
    if (log == nullptr) {
        return;
    }
    const crit_section_scope scope(LogLock());
    std::fprintf(log, "Leave: %s\n", name.c_str());
    std::fflush(log);
}

void flog::Message(const char* format, ...) noexcept {
    FILE* log = OpenedLog();
    if (log == nullptr) {
        return;
    }
    const crit_section_scope scope(LogLock());
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(log, format, arguments);
    va_end(arguments);
    std::fputc('\n', log);
    std::fflush(log);
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
