#include "base/log_file.h"

#include <atomic>

#include "base/crit_section.h"
#include "platform/local_time.h"
#include "platform/stdio_file.h"

namespace tessarin {

namespace {

constinit std::atomic<FILE*> openedLog = nullptr;

} // namespace

int32_t OpenLog(const char* path) {
    const crit_section_scope scope(LogLock());
    // Kept: a log that is replaced gets no closing banner; a reader sees by it that the host never
    // ended that log.
    if (FILE* previous = openedLog) {
        std::fclose(previous);
    }
    FILE* log = path != nullptr ? OpenStdio(path, "w+") : nullptr;
    openedLog = log;
    if (log == nullptr) {
        return 0;
    }
    return std::fprintf(log, "**** Starting Tessarin SDK Log: %s\n", LocalTimeText().data());
}

void CloseLog() {
    const crit_section_scope scope(LogLock());
    if (FILE* log = openedLog) {
        std::fprintf(log, "**** Ending Tessarin SDK Log: %s\n", LocalTimeText().data());
        std::fclose(log);
        openedLog = nullptr;
    }
}

FILE* OpenedLog() {
    return openedLog.load(std::memory_order_acquire);
}

CCritSection& LogLock() {
    // Never destroyed: static objects of the host may be traced while the process ends.
    static union permanent {
        permanent() : lock() {}
        ~permanent() {}
        CCritSection lock;
    } holder;
    return holder.lock;
}

} // namespace tessarin
